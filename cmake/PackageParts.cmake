# Read by CPack before each of its generators: the components of cmake/Install.cmake that go into the package.
set(parts Runtime)
if(CPACK_GENERATOR STREQUAL "DEB")
    list(APPEND parts Debian)
    set(CPACK_SET_DESTDIR ON) # this component has absolute folders, which must be below the folder that is packed
    set(CPACK_INSTALL_PREFIX /usr)
elseif(CPACK_GENERATOR STREQUAL "TGZ")
    list(APPEND parts Archive)
endif()
set(CPACK_INSTALL_CMAKE_PROJECTS "")
foreach(part IN LISTS parts)
    list(APPEND CPACK_INSTALL_CMAKE_PROJECTS "${CPACK_ZV_BUILD}" zvgentl ${part} /)
endforeach()
