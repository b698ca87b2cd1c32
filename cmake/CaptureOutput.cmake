# cmake -DCOMMAND=<word|word...> -DOUTPUT=<file> [-DGZIP=ON] -P CaptureOutput.cmake
# Writes the command's standard output to the file; with GZIP, replaces it by <file>.gz
# compressed as Debian wants (best compression, no name or time stamp inside).
string(REPLACE "|" ";" COMMAND "${COMMAND}")
execute_process(COMMAND ${COMMAND} OUTPUT_FILE ${OUTPUT} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "'${COMMAND}' failed (${status})")
endif()
if(GZIP)
  execute_process(COMMAND gzip -9nf ${OUTPUT} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip ${OUTPUT} failed (${status})")
  endif()
endif()
