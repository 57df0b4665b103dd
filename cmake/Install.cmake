# What `cmake --install` puts where: the component "runtime" is the tool, "development" the
# libraries with their headers, for CMake and for pkg-config. All of it can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(TESSEL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tessel)

if(TESSEL_TOOL)
  # Shared libraries are found beside the tool wherever both are moved to.
  file(RELATIVE_PATH from_bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  if(BUILD_SHARED_LIBS)
    set_target_properties(tessel tessel-tree PROPERTIES INSTALL_RPATH "${TESSEL_ORIGIN}/${from_bin_to_lib}")
  endif()
  install(TARGETS tessel tessel-tree RUNTIME COMPONENT runtime)
  foreach(name tessel tessel-tree)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/${name}.1
      DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
    install(FILES ${PROJECT_SOURCE_DIR}/app/tessel.bash-completion
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${name}
      COMPONENT runtime)
  endforeach()
endif()

# A shared library is needed by the tool, too; its link without a version, by developers alone.
install(TARGETS tessel_util tessel_graflib tessel_jpeg EXPORT tesselTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tessel)
# But the headers that only the libraries' own sources include.
install(DIRECTORY util graflib jpeg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tessel
  COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "DownScaleFix2*.h" EXCLUDE PATTERN PixelWalk.h EXCLUDE
    PATTERN SJpegState.h EXCLUDE PATTERN SinglePrecision.h EXCLUDE)
install(EXPORT tesselTargets NAMESPACE tessel:: DESTINATION ${TESSEL_CMAKE_DIR}
  COMPONENT development)

configure_package_config_file(cmake/tesselConfig.cmake.in tesselConfig.cmake
  INSTALL_DESTINATION ${TESSEL_CMAKE_DIR})
write_basic_package_version_file(tesselConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tesselConfig.cmake
    ${PROJECT_BINARY_DIR}/tesselConfigVersion.cmake
  DESTINATION ${TESSEL_CMAKE_DIR} COMPONENT development)

file(RELATIVE_PATH TESSEL_PC_PREFIX /usr/${CMAKE_INSTALL_LIBDIR}/pkgconfig /usr)
string(REGEX REPLACE "/$" "" TESSEL_PC_PREFIX ${TESSEL_PC_PREFIX})
# Who links static libraries links what they need, too.
set(TESSEL_PC_REQUIRES Requires)
if(BUILD_SHARED_LIBS)
  set(TESSEL_PC_REQUIRES Requires.private)
endif()
configure_file(cmake/tessel.pc.in tessel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessel.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
