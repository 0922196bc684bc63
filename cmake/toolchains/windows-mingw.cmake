# 64-bit Windows with mingw-w64, in the variant with POSIX threads, because the other one has no std::mutex.
#
# ZV_WINDOWS_PREFIX (a CMake or environment variable) is a folder that scripts/windows_dependencies.sh printed. The
# default is the result of the script's last run.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZV_MINGW x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ZV_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZV_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${ZV_MINGW}-windres)
set(CMAKE_MC_COMPILER ${ZV_MINGW}-windmc)

if(NOT ZV_WINDOWS_PREFIX)
    if(DEFINED ENV{ZV_WINDOWS_PREFIX})
        set(prefix $ENV{ZV_WINDOWS_PREFIX})
    elseif(DEFINED ENV{XDG_CACHE_HOME})
        set(prefix $ENV{XDG_CACHE_HOME}/zvgentl-windows/current)
    else()
        set(prefix $ENV{HOME}/.cache/zvgentl-windows/current)
    endif()
    file(REAL_PATH ${prefix} prefix)
    set(ZV_WINDOWS_PREFIX ${prefix} CACHE PATH "Libraries that scripts/windows_dependencies.sh built")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZV_WINDOWS_PREFIX)

set(CMAKE_FIND_ROOT_PATH ${ZV_WINDOWS_PREFIX} /usr/${ZV_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The build machine's own libraries are for another system.
set(ENV{PKG_CONFIG_LIBDIR} ${ZV_WINDOWS_PREFIX}/lib/pkgconfig)
# Tests run in Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine.sh)
# The static zlib: it is small, and only GCC's run-time libraries and Poco have to be shipped.
set(ZLIB_LIBRARY /usr/${ZV_MINGW}/lib/libz.a CACHE FILEPATH "zlib")
