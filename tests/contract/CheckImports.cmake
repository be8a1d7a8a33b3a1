# Fails unless a DLL imports exactly what its imports.txt lists, module by module:
# cmake -DLIBRARY=<file> -DTOOL=<llvm-readobj> -DLIST=<imports.txt> -P CheckImports.cmake
file(STRINGS "${LIST}" expected REGEX "^[^#]")
list(SORT expected)

execute_process(COMMAND "${TOOL}" --coff-imports "${LIBRARY}"
  OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "(Name|Symbol): [^\n]+" lines "${listing}")
set(imported)
set(modules)
foreach(line IN LISTS lines)
  if(line MATCHES "^Name: +(.+)$")
    set(module "${CMAKE_MATCH_1}")
    list(APPEND modules "${module}")
  elseif(line MATCHES "^Symbol: ([^ ]+)")
    list(APPEND imported "${module} ${CMAKE_MATCH_1}")
  endif()
endforeach()
list(SORT imported)

set(added ${imported})
list(REMOVE_ITEM added ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${imported})
list(LENGTH imported count)
if(added OR missing OR count EQUAL 0 OR listing MATCHES "DelayImport")
  list(JOIN added "\n  " added)
  list(JOIN missing "\n  " missing)
  message(FATAL_ERROR "${LIBRARY} imports ${count} functions.\nNot in ${LIST}:\n  ${added}\n"
    "In it, but not imported:\n  ${missing}")
endif()
message(STATUS "${LIBRARY} imports the ${count} functions and nothing else, from: ${modules}")
