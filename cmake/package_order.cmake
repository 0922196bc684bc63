# Run by CPack after packing. Its tar and zip archives contain the builder's account and have the order in which the
# file system happens to list the files. They are packed again, in the order of names and without an account. Packages
# of the other kinds need no change.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH} OR NOT CPACK_GENERATOR MATCHES "^(TGZ|ZIP)$")
    return()
endif()
cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH above)
cmake_path(GET CPACK_TEMPORARY_DIRECTORY FILENAME top)
file(REMOVE ${CPACK_PACKAGE_FILES})
set(ENV{LC_ALL} C)
set(ENV{TZ} UTC) # zip archives have local times
if(CPACK_GENERATOR STREQUAL "TGZ")
    execute_process(
        COMMAND tar --create --sort=name --owner=0 --group=0 --numeric-owner --format=gnu ${top}
        COMMAND gzip --no-name --best
        WORKING_DIRECTORY ${above} OUTPUT_FILE ${CPACK_PACKAGE_FILES} COMMAND_ERROR_IS_FATAL ANY)
else()
    execute_process(
        COMMAND find ${top}
        COMMAND sort
        COMMAND zip --quiet -X -9 -@ ${CPACK_PACKAGE_FILES}
        WORKING_DIRECTORY ${above} COMMAND_ERROR_IS_FATAL ANY)
endif()
