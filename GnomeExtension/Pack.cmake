# Makes one form of the extension out of its sources. The sources are modules as
# GNOME 45 and later load them; for those before, each import and export is
# written the old way.
#
#     FORM      modern or legacy
#     VERSIONS  of the Shell that load it
#     VERSION   of the project
#     MODULES   what is packed besides extension.js
#     ICONS     what is packed as it is
#     OUTPUT    the folder, emptied first
#
# To be run in the folder of the sources.

function(write_the_old_way text result)
    string(REGEX REPLACE "import ([A-Za-z]+) from 'gi://([A-Za-z]+)'" "const \\1 = imports.gi.\\2" text "${text}")
    string(REGEX REPLACE "import \\* as ([A-Za-z]+) from 'resource:///org/gnome/shell/([A-Za-z/]+)\\.js'"
           "const \\1 = imports.\\2" text "${text}")
    string(REGEX REPLACE "import ({[^}]+}) from 'resource:///org/gnome/shell/([A-Za-z/]+)\\.js'"
           "const \\1 = imports.\\2" text "${text}")
    string(REGEX REPLACE "import ({[^}]+}) from '\\./([A-Za-z]+)\\.js'"
           "const \\1 = imports.misc.extensionUtils.getCurrentExtension().imports.\\2" text "${text}")
    # A path among the Shell's own modules.
    while(text MATCHES "= imports\\.[A-Za-z.]+/")
        string(REGEX REPLACE "(= imports\\.[A-Za-z.]+)/" "\\1." text "${text}")
    endwhile()
    string(REGEX REPLACE "export function" "function" text "${text}")
    string(REGEX REPLACE "export class ([A-Za-z]+)" "var \\1 = class \\1" text "${text}")
    if("\n${text}" MATCHES "\n((import|export) [^\n]*)")
        message(FATAL_ERROR "This cannot be written the old way: ${CMAKE_MATCH_1}")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${OUTPUT})
foreach(module ${MODULES})
    file(READ ${module} text)
    if(FORM STREQUAL legacy)
        write_the_old_way("${text}" text)
    endif()
    file(WRITE ${OUTPUT}/${module} "${text}")
endforeach()
file(COPY ${FORM}/extension.js ${ICONS} DESTINATION ${OUTPUT})

string(REGEX REPLACE "([0-9]+)" "\"\\1\"" versions "${VERSIONS}")
string(REPLACE ";" ", " versions "${versions}")
set(version ${VERSION})
# Last, since its presence says that all is there.
configure_file(metadata.json.in ${OUTPUT}/metadata.json @ONLY)
