# Runs the example and checks what it prints: ten frames, none of them empty.
# cmake -DEXAMPLE=... -DPRODUCER=... -P check_example.cmake
execute_process(COMMAND ${EXAMPLE} ${PRODUCER} OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
message("${output}${errors}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "the example ended with ${result}")
endif()
string(REGEX MATCHALL "frame [0-9]+: [1-9][0-9]* bytes, pixels at (0x)?[0-9a-f]+\r?\n" frames "${output}")
list(LENGTH frames count)
if(NOT count EQUAL 10)
    message(FATAL_ERROR "${count} frames instead of 10")
endif()
