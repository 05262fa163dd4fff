# cmake --install: library, headers, the program, find_package(MediaAccessor) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/MediaAccessor)

install(TARGETS MediaAccessor EXPORT MediaAccessorTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY interface/MediaAccessor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT MediaAccessorTargets NAMESPACE MediaAccessor:: DESTINATION ${package_dir})

write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/MediaAccessorConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/MediaAccessorConfig.cmake
  "include(\${CMAKE_CURRENT_LIST_DIR}/MediaAccessorTargets.cmake)\n")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/MediaAccessorConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/MediaAccessorConfigVersion.cmake DESTINATION ${package_dir})

# Relative, so that the installed tree can be moved.
file(RELATIVE_PATH include_from_pkgconfig
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/MediaAccessor.pc.in MediaAccessor.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/MediaAccessor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
