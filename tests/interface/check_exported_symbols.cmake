# Compares the exported symbols of the library with the list that is kept.
#     cmake -DLIBRARY=... -DNM=... -DOBJDUMP=... -DEXPECTED=... -P check_exported_symbols.cmake
file(READ ${EXPECTED} expected)
if(LIBRARY MATCHES "[.]dll$")
  # Compilers for Windows never export the names inside type information, and here they export that of
  # classes of the implementation besides which others derive from, or which derive from exported ones.
  string(REGEX REPLACE "typeinfo name for [^\n]*\n" "" expected "${expected}")
  set(also_exported "^_ZTIN7Quorvex(12SpeechFrames5Queue|15AllocatedObject|16BuiltInMediaFile|23BuiltInMediaFileFactory)")
  find_program(CXXFILT c++filt REQUIRED)
  execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "\t\\[ *[0-9]+\\] _[A-Za-z0-9_]+\n" lines "${dump}")
  list(TRANSFORM lines REPLACE "\t\\[ *[0-9]+\\] " "")
  list(FILTER lines EXCLUDE REGEX "${also_exported}")
  list(JOIN lines "" mangled)
  file(WRITE ${LIBRARY}.mangled.txt "${mangled}")
  execute_process(COMMAND ${CXXFILT} INPUT_FILE ${LIBRARY}.mangled.txt OUTPUT_VARIABLE symbols
    COMMAND_ERROR_IS_FATAL ANY)
else()
  execute_process(COMMAND ${NM} --dynamic --defined-only --demangle --format=just-symbols ${LIBRARY}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
endif()
string(REPLACE ";" "\\;" symbols "${symbols}")
string(REGEX REPLACE "\n$" "" symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
list(REMOVE_DUPLICATES symbols)
list(SORT symbols)
list(JOIN symbols "\n" actual)
if(NOT "${actual}\n" STREQUAL "${expected}")
  file(WRITE ${LIBRARY}.exported_symbols.txt "${actual}\n")
  message(FATAL_ERROR "${LIBRARY} does not export what ${EXPECTED} lists. "
    "Its list was written to ${LIBRARY}.exported_symbols.txt.")
endif()
