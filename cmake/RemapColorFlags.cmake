# Flags of every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

# Most of a build's time goes into the same headers again and again: a room's sources are compiled some
# at a time, so what their unnamed namespaces hold has names of its own within the room. A compiler
# cache does better with one at a time.
set(joinsSources ON)
if(CMAKE_CXX_COMPILER_LAUNCHER)
    set(joinsSources OFF)
endif()
option(REMAPCOLOR_JOIN "Compile several sources of a room together" ${joinsSources})
set(CMAKE_UNITY_BUILD ${REMAPCOLOR_JOIN})
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12 CACHE STRING "Sources that are compiled together at most")

# The same picture gives the same bits on every machine: no product and sum is ever fused.
add_compile_options(-ffp-contract=off -Wall -Wextra -Wpedantic)

# GCC 12 warns of overlapping copies inside its own std::string.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-restrict)
    if(REMAPCOLOR_JOIN)
        # Sources that are joined look like headers: what they declare, they alone know.
        add_compile_options(-Wno-subobject-linkage)
    endif()
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

# Built programs look where installed ones do. Left to itself, CMake pads their list of folders with
# empty names, for which the loader takes the working directory.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib:$ORIGIN/../lib/vxtools:$ORIGIN:$ORIGIN/..")
