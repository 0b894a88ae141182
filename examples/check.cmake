# Runs a program and checks its exit code and its output:
#   cmake -DCOMMAND="program;argument..." -DEXIT=code -DMATCH=regex [-DINPUT=file] -P check.cmake
set(input)
if(INPUT)
    set(input INPUT_FILE ${INPUT})
endif()
execute_process(COMMAND ${COMMAND} ${input} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE output)
message("${output}")
if(NOT code STREQUAL EXIT)
    message(FATAL_ERROR "ended with ${code}, not with ${EXIT}")
endif()
if(NOT output MATCHES "${MATCH}")
    message(FATAL_ERROR "wrote nothing like ${MATCH}")
endif()
