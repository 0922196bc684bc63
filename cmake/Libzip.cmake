# ZV_LIBZIP: the target of libzip, whose package for CMake asks on Linux for programs that nobody needs.
if(WIN32)
    find_package(libzip REQUIRED)
    set(ZV_LIBZIP libzip::zip)
else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
    set(ZV_LIBZIP PkgConfig::LIBZIP)
endif()
