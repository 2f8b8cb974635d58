# Writes the bundle's information file. `feed` is the address of the update
# feed; empty, the key is left out.
function(write_information_file file feed)
    set(QUILLMERE_INFO_FEED "")
    if(NOT feed STREQUAL "")
        string(REPLACE "&" "&amp;" feed "${feed}")
        string(REPLACE "<" "&lt;" feed "${feed}")
        set(QUILLMERE_INFO_FEED "    <key>QuillmereUpdateFeed</key>\n    <string>${feed}</string>\n")
    endif()
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Info.plist.in ${file} @ONLY)
endfunction()
