# The information file beside the program. A packager names the update feed
# with -DQUILLMERE_UPDATE_FEED=https://example.org/quillmere/feed.json; without
# one the key is left out, and the program never asks anybody for updates.
set(QUILLMERE_UPDATE_FEED "" CACHE STRING "Address of the update feed; empty for none")

set(QUILLMERE_INFO_FEED "")
if(NOT QUILLMERE_UPDATE_FEED STREQUAL "")
    string(REPLACE "\\" "\\\\" feed "${QUILLMERE_UPDATE_FEED}")
    string(REPLACE "\"" "\\\"" feed "${feed}")
    set(QUILLMERE_INFO_FEED "    \"QuillmereUpdateFeed\": \"${feed}\",\n")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/Info.json.in ${PROJECT_BINARY_DIR}/share/quillmere/Info.json @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/share/quillmere/Info.json DESTINATION ${CMAKE_INSTALL_DATADIR}/quillmere)
