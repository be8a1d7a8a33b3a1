# Writes the manual page that TOOL prints, compressed by GZIP, to TO.
execute_process(COMMAND ${TOOL} --man-page COMMAND "${GZIP}" -9n
  OUTPUT_FILE "${TO}" COMMAND_ERROR_IS_FATAL ANY)
