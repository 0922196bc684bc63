# Language level, warnings, visibility, output folder and run-time search path of all targets.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)

set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# All libraries and programs are in one folder, where they find each other even if the folder is moved.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# What is installed is built by the target of its name; tests and benchmarks are not.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

if(MSVC)
    add_compile_options(/W4 /WX /permissive- /utf-8)
else()
    add_compile_options(-Wall -Wextra -Wconversion -Wshadow -Wformat=2 -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-Wreserved-identifier)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Unique symbols would keep a library loaded after dlclose.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

# Packages must not depend on where they were built. Without this option, debuggers find the sources more easily.
option(ZV_REPRODUCIBLE "Keep the paths of the source and build folders out of the built files" OFF)
if(ZV_REPRODUCIBLE)
    add_compile_options(
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()

# Where ccache is installed, no build compiles the same source with the same options twice. It has to be told that
# precompiled headers are what they seem, and must not rewrite paths in what is packaged.
find_program(ZV_CCACHE ccache DOC "Compiler cache; empty: always compile")
if(ZV_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros)
    if(ZV_REPRODUCIBLE)
        list(APPEND launcher --unset=CCACHE_NOHASHDIR CCACHE_HASHDIR=1 CCACHE_BASEDIR=)
    endif()
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher} ${ZV_CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher} ${ZV_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
    endif()
endif()

set(ZV_SANITIZE "" CACHE STRING "Sanitizers to build with: empty, 'address,undefined' or 'thread'")
if(ZV_SANITIZE)
    add_compile_options(-fsanitize=${ZV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZV_SANITIZE})
    add_compile_definitions(ZV_SANITIZED)
    if(ZV_SANITIZE MATCHES address)
        add_compile_definitions(ZV_ADDRESS_SANITIZER)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # It compares types by address, which differ between the producer and a program that loads it.
        add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize=function,vptr>)
    endif()
elseif(UNIX)
    add_link_options(-Wl,--no-undefined)
endif()
# The copyright notice in Windows' version resources: the first line of the licence.
file(STRINGS ${PROJECT_SOURCE_DIR}/LICENSE ZV_COPYRIGHT LIMIT_COUNT 1)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/LICENSE)
# The prefix of the paths that tests use: Wine shows the build machine's files as drive Z.
set(ZV_DRIVE "")
if(WIN32 AND CMAKE_CROSSCOMPILING)
    set(ZV_DRIVE "Z:")
endif()
if(WIN32)
    include(WindowsDefaults)
endif()
if(UNIX)
    add_link_options(-Wl,--enable-new-dtags -Wl,--as-needed -Wl,-z,relro,-z,now)
endif()

option(ZV_COVERAGE "Instrument for coverage" OFF)
if(ZV_COVERAGE)
    add_compile_options(--coverage -fprofile-abs-path -fprofile-update=atomic)
    add_link_options(--coverage)
endif()
