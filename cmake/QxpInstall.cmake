# Installs the shared library, the host program, the headers and a package for find_package(vc_qxparser).

include(CMakePackageConfigHelpers)

install(TARGETS vc_qxparser vc_qxparser_window qxp_wxbase qxp_wxcore EXPORT vc_qxparserTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS qxp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

get_property(headers GLOBAL PROPERTY QXP_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE relative)
  cmake_path(GET relative PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vc_qxparser/${folder})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/vc_qxparser.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vc_qxparser)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vc_qxparser)
install(EXPORT vc_qxparserTargets NAMESPACE vc_qxparser:: DESTINATION ${package_dir})
configure_package_config_file(cmake/vc_qxparserConfig.cmake.in ${PROJECT_BINARY_DIR}/vc_qxparserConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vc_qxparserConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vc_qxparserConfig.cmake ${PROJECT_BINARY_DIR}/vc_qxparserConfigVersion.cmake
  DESTINATION ${package_dir})
