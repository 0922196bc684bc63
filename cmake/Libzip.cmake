# ZV_LIBZIP: libzip's target. On Linux, libzip's own CMake package requires programs that nobody needs.
if(WIN32)
    find_package(ZLIB REQUIRED) # its package does not look for what it needs
    find_package(libzip REQUIRED)
    set(ZV_LIBZIP libzip::zip)
else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
    set(ZV_LIBZIP PkgConfig::LIBZIP)
endif()
