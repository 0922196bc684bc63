# CPack packs the installed files: a Debian package and a tar archive for Linux, a zip archive and an installer for
# Windows. scripts/package.sh runs it, with the commit's time in SOURCE_DATE_EPOCH.
set(CPACK_PACKAGE_NAME zvgentl)
set(CPACK_PACKAGE_VENDOR "ZEVA Electronics Ltd.")
# There is no address to write to, and dpkg does not insist on one, so the contact is the vendor's name alone.
set(CPACK_PACKAGE_CONTACT ${CPACK_PACKAGE_VENDOR})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DESCRIPTION "Image-acquisition software loads ZVGRLibGenTL.cti through the GenTL
interface to find frame grabbers, open their cameras and stream images. The
package contains the producer, its libraries, the command-line tool zvgentl,
headers, an example and the documentation.")
set(CPACK_RESOURCE_FILE_README ${PROJECT_SOURCE_DIR}/docs/installing.md)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package_times.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package_order.cmake)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageParts.cmake)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_ZV_BUILD ${PROJECT_BINARY_DIR})

if(WIN32)
    set(CPACK_GENERATOR ZIP NSIS)
    set(CPACK_PACKAGE_FILE_NAME zvgentl-${PROJECT_VERSION}-windows-x86_64)
    set(CPACK_PACKAGE_INSTALL_DIRECTORY ZVGenTL)
    set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY ZVGenTL)
    set(CPACK_NSIS_DISPLAY_NAME "ZVGRLib GenTL Producer")
    set(CPACK_ZV_NSIS_FOLDER ${PROJECT_SOURCE_DIR}/cmake/nsis)
    set(CPACK_MODULE_PATH ${CPACK_ZV_NSIS_FOLDER}) # NSIS.template.in
    set(CPACK_ZV_COPYRIGHT ${ZV_COPYRIGHT})
else()
    set(CPACK_GENERATOR DEB TGZ)
    set(CPACK_PACKAGE_FILE_NAME zvgentl-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
    set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
        ${PROJECT_SOURCE_DIR}/cmake/linux/postinst
        ${PROJECT_SOURCE_DIR}/cmake/linux/postrm
        ${PROJECT_SOURCE_DIR}/cmake/linux/conffiles)
endif()
include(CPack)
