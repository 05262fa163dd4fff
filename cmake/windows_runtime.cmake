# The compiler's own DLLs, which everything that it makes needs: put beside the programs, also where the
# library is installed. Shared, since an exception of a plug-in module is caught by the library.
foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND windows_runtime ${file})
endforeach()
file(COPY ${windows_runtime} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
install(FILES ${windows_runtime} DESTINATION ${CMAKE_INSTALL_BINDIR})
