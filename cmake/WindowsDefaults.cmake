# Common to all files for Windows: hardening, one C++ run-time library, a version resource.

if(MINGW)
    # Data execution prevention and 64-bit address space layout randomisation, which are the default of Microsoft's
    # linker. The link time is left out of the files, so that the same sources give the same bytes.
    add_link_options(-Wl,--nxcompat -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--no-insert-timestamp)

    # Exceptions and error categories are identified by address, so all files have to share one run-time library.
    add_link_options($<$<LINK_LANGUAGE:CXX>:-shared-libgcc>)

    # Required in the folder of every program: GCC's run-time libraries and Poco's Foundation.
    set(ZV_RUNTIME_LIBRARIES "")
    foreach(name libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
            OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        list(APPEND ZV_RUNTIME_LIBRARIES ${file})
    endforeach()
    list(APPEND ZV_RUNTIME_LIBRARIES ${ZV_WINDOWS_PREFIX}/bin/libPocoFoundation.dll)

    # Our own libraries and those above form a private assembly, which the loader looks for in the folder of the file
    # that asks for it. So the producer finds them however it is loaded.
    set(ZV_ASSEMBLY ${PROJECT_NAME}.Libraries)
    set(names ZVGRLib.dll ZVLogger.dll)
    foreach(file IN LISTS ZV_RUNTIME_LIBRARIES)
        cmake_path(GET file FILENAME name)
        list(APPEND names ${name})
    endforeach()
    list(TRANSFORM names REPLACE "(.+)" "  <file name=\"\\1\"/>\n")
    string(CONCAT ZV_ASSEMBLY_FILES ${names})
    configure_file(cmake/windows/libraries.manifest.in ${PROJECT_BINARY_DIR}/${ZV_ASSEMBLY}.manifest @ONLY)
    configure_file(cmake/windows/dependency.manifest.in ${PROJECT_BINARY_DIR}/dependency.manifest @ONLY)
    list(APPEND ZV_RUNTIME_LIBRARIES ${PROJECT_BINARY_DIR}/${ZV_ASSEMBLY}.manifest)
    file(COPY ${ZV_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endif()

# zv_windows_file(target description): gives a library or program its final name and a version resource.
function(zv_windows_file target description)
    get_target_property(type ${target} TYPE)
    set(ZV_FILE_TYPE VFT_DLL)
    set(ZV_DEPENDENCY "")
    if(type STREQUAL "EXECUTABLE")
        set(ZV_FILE_TYPE VFT_APP)
    else()
        set_target_properties(${target} PROPERTIES PREFIX "")
        if(ZV_ASSEMBLY) # 2: for a library, and 24: a manifest
            set(ZV_DEPENDENCY "2 24 \"${PROJECT_BINARY_DIR}/dependency.manifest\"")
            set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc PROPERTIES
                OBJECT_DEPENDS ${PROJECT_BINARY_DIR}/dependency.manifest)
        endif()
    endif()
    get_target_property(suffix ${target} SUFFIX)
    if(NOT suffix)
        set(suffix ".dll")
        if(type STREQUAL "EXECUTABLE")
            set(suffix ".exe")
        endif()
    endif()
    set(ZV_FILE_NAME ${target}${suffix})
    set(ZV_FILE_DESCRIPTION ${description})
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
endfunction()
