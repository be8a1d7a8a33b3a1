# qxbc_make_locales(LOCALEDEF FOLDER): makes the locales of the tests in FOLDER, those that are not there yet. A failed
# localedef leaves an empty folder, which must not count as a locale: without this the tests would skip for ever, also
# after what was missing is installed.
function(qxbc_make_locales localedef folder)
  foreach(charset UTF-8 ISO-8859-1)
    set(locale "${folder}/de_DE.${charset}")
    if(localedef AND NOT EXISTS "${locale}/LC_CTYPE")
      file(REMOVE_RECURSE "${locale}")
      file(MAKE_DIRECTORY "${folder}")
      execute_process(COMMAND "${localedef}" -i de_DE -f ${charset} "${locale}" OUTPUT_QUIET ERROR_QUIET)
      if(NOT EXISTS "${locale}/LC_CTYPE")
        file(REMOVE_RECURSE "${locale}")
      endif()
    endif()
  endforeach()
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  qxbc_make_locales("${LOCALEDEF}" "${FOLDER}")
endif()
