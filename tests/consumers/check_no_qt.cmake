# cmake -DPROGRAM=<executable> -P check_no_qt.cmake
# Fails when the dynamic loader would load any Qt library for PROGRAM.
if(NOT EXISTS "${PROGRAM}")
  message(FATAL_ERROR "no such program: ${PROGRAM}")
endif()
execute_process(COMMAND ldd "${PROGRAM}" OUTPUT_VARIABLE libraries ERROR_VARIABLE errors RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "ldd ${PROGRAM} failed (${status}): ${errors}")
endif()
if(libraries MATCHES "libQt")
  message(FATAL_ERROR "${PROGRAM} loads Qt:\n${libraries}")
endif()
message(STATUS "${PROGRAM}: no Qt among\n${libraries}")
