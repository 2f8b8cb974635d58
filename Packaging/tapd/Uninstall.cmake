# Removes what `cmake --install` of this build has placed, and what the key-tap
# service has kept. Folders that this leaves empty go too.
file(GLOB manifests ${BUILD_DIRECTORY}/install_manifest*.txt)
if(NOT manifests)
    message(FATAL_ERROR "Nothing was installed from ${BUILD_DIRECTORY}.")
endif()
set(root "$ENV{DESTDIR}")

set(files)
foreach(manifest IN LISTS manifests)
    file(STRINGS ${manifest} listed)
    list(APPEND files ${listed})
endforeach()
list(REMOVE_DUPLICATES files)

# The system's own folders stay, empty or not.
function(removeEmptyFolders folder)
    while(IS_DIRECTORY "${folder}" AND (folder MATCHES "[Qq]uillmere" OR NOT folder MATCHES "^/(usr|etc|lib)(/|$)"))
        file(GLOB content LIST_DIRECTORIES true "${folder}/*")
        if(content)
            return()
        endif()
        message(STATUS "Removing ${folder}")
        file(REMOVE_RECURSE "${folder}")
        cmake_path(GET folder PARENT_PATH folder)
    endwhile()
endfunction()

# Only the service of this system runs, and only an installation into it.
set(isRunningSystem FALSE)
if(NOT root AND files MATCHES "/quillmere-tapd.service" AND EXISTS /run/systemd/system)
    set(isRunningSystem TRUE)
    execute_process(COMMAND systemctl stop quillmere-tapd.service ERROR_QUIET)
endif()

foreach(file IN LISTS files)
    if(EXISTS "${root}${file}" OR IS_SYMLINK "${root}${file}")
        message(STATUS "Removing ${root}${file}")
        file(REMOVE "${root}${file}")
        cmake_path(GET file PARENT_PATH folder)
        removeEmptyFolders("${root}${folder}")
    endif()
endforeach()

if(isRunningSystem)
    message(STATUS "Removing /var/lib/quillmere")
    file(REMOVE_RECURSE /var/lib/quillmere)
    # The account stays, as accounts do, and has nothing any more.
    execute_process(COMMAND udevadm control --reload ERROR_QUIET)
    execute_process(COMMAND chown root /dev/uinput ERROR_QUIET)
    execute_process(COMMAND systemctl daemon-reload ERROR_QUIET)
endif()
file(REMOVE ${manifests})
