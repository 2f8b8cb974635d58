# For macOS elsewhere: what is compiled uses libc++, as it does on a Mac. The
# system's libraries are made for another standard library, and what names that
# one does not link: Boost.JSON and GoogleTest are built from their sources, and
# QtStrings adds to Qt's own what the program uses of it.
add_compile_options(-stdlib=libc++)
add_link_options(-stdlib=libc++)

file(WRITE ${PROJECT_BINARY_DIR}/boost_json.cpp "#include <boost/json/src.hpp>\n")
add_library(boost_json STATIC ${PROJECT_BINARY_DIR}/boost_json.cpp)
# Its recursion has to fit a small stack, as that of an installed one does.
target_compile_options(boost_json PRIVATE -w -O1 -fno-sanitize=all)
add_library(Boost::json ALIAS boost_json)

set(INSTALL_GTEST OFF)
set(BUILD_GMOCK OFF)
add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL)
