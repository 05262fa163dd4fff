# Compares the exported symbols of the library with the list that is kept.
#     cmake -DLIBRARY=... -DNM=... -DEXPECTED=... -P check_exported_symbols.cmake
execute_process(COMMAND ${NM} --dynamic --defined-only --demangle --format=just-symbols ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE ";" "\\;" symbols "${symbols}")
string(REGEX REPLACE "\n$" "" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
list(REMOVE_DUPLICATES symbols)
list(SORT symbols)
list(JOIN symbols "\n" actual)
file(READ ${EXPECTED} expected)
if(NOT "${actual}\n" STREQUAL "${expected}")
  file(WRITE ${LIBRARY}.exported_symbols.txt "${actual}\n")
  message(FATAL_ERROR "${LIBRARY} does not export what ${EXPECTED} lists. "
    "Its list was written to ${LIBRARY}.exported_symbols.txt.")
endif()
