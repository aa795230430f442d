# Flags of every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

# The same picture gives the same bits on every machine: no product and sum is ever fused.
add_compile_options(-ffp-contract=off -Wall -Wextra -Wpedantic)

# GCC 12 warns of overlapping copies inside its own std::string.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-restrict)
endif()

# Names of source files in messages do not depend on where the tree lies.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(REMAPCOLOR_SANITIZE)
    add_compile_options(-fsanitize=${REMAPCOLOR_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${REMAPCOLOR_SANITIZE})
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(REMAPCOLOR_TOOL_DIRECTORY ${PROJECT_BINARY_DIR}/lib/vxtools)

set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib:$ORIGIN:$ORIGIN/..")
