# Where "cmake --install" puts the files, relative to the prefix. Components: Runtime is for everybody, Debian only for
# the Debian package, Archive only for the tar archive; "cmake --install" leaves out the last two.
#
# The producer is in one folder with its libraries and zvgentl, as in the build folder: they find each other there,
# wherever the folder is.
if(WIN32)
    set(ZV_FILES bin)
    set(ZV_HEADERS include)
    set(ZV_PAGES doc)
    set(ZV_EXAMPLES examples)
else()
    set(ZV_FILES lib/${CMAKE_LIBRARY_ARCHITECTURE}/gentl)
    set(ZV_HEADERS include/zvgentl)
    set(ZV_PAGES share/doc/zvgentl)
    set(ZV_EXAMPLES ${ZV_PAGES}/examples)
endif()
cmake_path(NORMAL_PATH ZV_FILES)

install(TARGETS ZVGRLibGenTL ZVGRLib ZVLogger
    RUNTIME DESTINATION ${ZV_FILES} COMPONENT Runtime
    LIBRARY DESTINATION ${ZV_FILES} COMPONENT Runtime
    ARCHIVE DESTINATION lib COMPONENT ImportLibraries) # not packaged: consumers load the producer by its path
if(ZV_RUNTIME_LIBRARIES)
    install(FILES ${ZV_RUNTIME_LIBRARIES} DESTINATION ${ZV_FILES} COMPONENT Runtime)
    # The compiler's libraries contain 20 MB of debugging information.
    foreach(library IN LISTS ZV_RUNTIME_LIBRARIES)
        cmake_path(GET library FILENAME name)
        if(NOT name MATCHES "[.]dll$")
            continue()
        endif()
        install(CODE "
            if(CMAKE_INSTALL_DO_STRIP)
                execute_process(COMMAND \"${CMAKE_STRIP}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${ZV_FILES}/${name}\"
                    COMMAND_ERROR_IS_FATAL ANY)
            endif()" COMPONENT Runtime)
    endforeach()
endif()
if(ZV_BUILD_TOOLS)
    install(TARGETS zvgentl RUNTIME DESTINATION ${ZV_FILES} COMPONENT Runtime)
    if(NOT WIN32)
        # The program finds the producer in the folder of its own file, so bin only has a link to it.
        file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/link)
        file(CREATE_LINK ../${ZV_FILES}/zvgentl ${PROJECT_BINARY_DIR}/link/zvgentl SYMBOLIC)
        install(FILES ${PROJECT_BINARY_DIR}/link/zvgentl DESTINATION bin COMPONENT Runtime)
    endif()
endif()

install(FILES include/GenTL/GenTL.h DESTINATION ${ZV_HEADERS}/GenTL COMPONENT Runtime)
install(FILES include/zvgr/ZVGRLib.h include/zvgr/FrameStamp.h DESTINATION ${ZV_HEADERS}/zvgr COMPONENT Runtime)
install(FILES examples/grab_frames.cpp examples/load.h DESTINATION ${ZV_EXAMPLES} COMPONENT Runtime)
install(DIRECTORY examples/grabbers DESTINATION ${ZV_EXAMPLES} COMPONENT Runtime)

option(ZV_DOCUMENTATION "Make the HTML documentation and the notices of third-party licences" OFF)
if(ZV_DOCUMENTATION)
    # The system's own interpreter: only it has the modules that Debian packages.
    find_program(ZV_SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
    set(built --system linux)
    if(WIN32)
        set(built --system windows --versions ${ZV_WINDOWS_PREFIX}/versions)
    endif()
    set(pages ${PROJECT_BINARY_DIR}/pages)
    file(GLOB texts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/docs/*.json
        ${PROJECT_SOURCE_DIR}/docs/pictures/*)
    add_custom_command(OUTPUT ${pages}/index.html
        COMMAND ${ZV_SYSTEM_PYTHON} ${PROJECT_SOURCE_DIR}/scripts/documentation.py ${PROJECT_SOURCE_DIR} ${pages}
            --version ${PROJECT_VERSION}
        DEPENDS scripts/documentation.py CHANGELOG.md ${texts}
        COMMENT "HTML documentation" VERBATIM)
    add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/THIRD-PARTY-NOTICES.txt
        COMMAND ${ZV_SYSTEM_PYTHON} ${PROJECT_SOURCE_DIR}/scripts/materials.py notices
            ${built} --output ${PROJECT_BINARY_DIR}/THIRD-PARTY-NOTICES.txt
        DEPENDS scripts/materials.py
        COMMENT "Notices of third-party licences" VERBATIM)
    add_custom_target(documentation ALL DEPENDS ${pages}/index.html ${PROJECT_BINARY_DIR}/THIRD-PARTY-NOTICES.txt)
    install(DIRECTORY ${pages}/ DESTINATION ${ZV_PAGES} COMPONENT Runtime)
    install(FILES ${PROJECT_BINARY_DIR}/THIRD-PARTY-NOTICES.txt DESTINATION ${ZV_PAGES} COMPONENT Runtime)
endif()

if(UNIX)
    set(made ${PROJECT_BINARY_DIR}/linux)
    set(ZV_GENTL_FOLDER /usr/${ZV_FILES})
    foreach(file zvgentl.sh 90-zvgentl.conf 90-zvgentl 90zvgentl environment.sh)
        configure_file(cmake/linux/${file}.in ${made}/${file} @ONLY)
    endforeach()
    install(FILES ${made}/environment.sh DESTINATION . COMPONENT Archive EXCLUDE_FROM_ALL)
    # Only a system's package may install to absolute folders.
    install(FILES ${made}/zvgentl.sh DESTINATION /etc/profile.d COMPONENT Debian EXCLUDE_FROM_ALL)
    install(FILES ${made}/90zvgentl DESTINATION /etc/X11/Xsession.d COMPONENT Debian EXCLUDE_FROM_ALL)
    install(FILES ${made}/90-zvgentl.conf DESTINATION /usr/lib/environment.d COMPONENT Debian EXCLUDE_FROM_ALL)
    install(PROGRAMS ${made}/90-zvgentl DESTINATION /usr/lib/systemd/system-environment-generators
        COMPONENT Debian EXCLUDE_FROM_ALL)
    install(FILES LICENSE DESTINATION ${ZV_PAGES} COMPONENT Archive EXCLUDE_FROM_ALL)
    # Debian's form of the same file.
    file(READ LICENSE ZV_LICENSE_PARAGRAPHS)
    string(STRIP "${ZV_LICENSE_PARAGRAPHS}" ZV_LICENSE_PARAGRAPHS)
    string(REPLACE "\n" "\n " ZV_LICENSE_PARAGRAPHS " ${ZV_LICENSE_PARAGRAPHS}")
    string(REPLACE "\n \n" "\n .\n" ZV_LICENSE_PARAGRAPHS "${ZV_LICENSE_PARAGRAPHS}")
    configure_file(cmake/linux/copyright.in ${made}/copyright @ONLY)
    install(FILES ${made}/copyright DESTINATION /usr/share/doc/zvgentl COMPONENT Debian EXCLUDE_FROM_ALL)
else()
    install(FILES LICENSE DESTINATION ${ZV_PAGES} RENAME LICENSE.txt COMPONENT Runtime)
endif()
