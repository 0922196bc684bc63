# What compiler and linker can do against errors that somebody exploits. tests/checks/hardening.py looks at the built files.
# The loader's part of it (full RELRO) is with the other linker options. "-z nodlopen" is not for a library that
# applications load at run time.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

# zv_check_library_calls(): bounds are checked in the C++ library's containers, in the targets of the calling folder. Not
# for the producer, where that costs up to 65 instructions a frame.
function(zv_check_library_calls)
    if(ZV_HARDENED)
        add_compile_definitions(_GLIBCXX_ASSERTIONS)
    endif()
endfunction()

# Only for builds that are optimised, as _FORTIFY_SOURCE needs it, and without sanitizers, which find more.
if(NOT CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$" OR MSVC OR ZV_SANITIZE OR ZV_COVERAGE)
    return()
endif()
set(ZV_HARDENED ON)

# zv_add_option_if_known(option): for both languages, if the compiler knows it.
function(zv_add_option_if_known option)
    string(MAKE_C_IDENTIFIER "ZV_HAS${option}" known)
    check_cxx_compiler_flag(${option} ${known})
    if(${known})
        add_compile_options(${option})
    endif()
endfunction()

zv_add_option_if_known(-fstack-protector-strong)
if(MINGW)
    # Guard and handler are linked in: one more library beside each program would only hold these two.
    link_libraries(-l:libssp.a)
    return()
endif()
zv_add_option_if_known(-fstack-clash-protection)
zv_add_option_if_known(-fcf-protection)
add_link_options(-Wl,-z,noexecstack)

# The system's headers warn about a level that they or the compiler do not have.
set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <cstdlib>\nint main() {}" ZV_HAS_FORTIFY_SOURCE_3)
unset(CMAKE_REQUIRED_FLAGS)
if(ZV_HAS_FORTIFY_SOURCE_3)
    set(ZV_FORTIFY_SOURCE 3)
else()
    set(ZV_FORTIFY_SOURCE 2)
endif()
# Some compilers define it themselves. An option, so that it stays in the order of the other options.
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${ZV_FORTIFY_SOURCE})
