# Installs the libraries, the host program, the headers, and what build systems find them with. Each piece belongs to a
# component, which is a package of its own where packages are made.

include(CMakePackageConfigHelpers)

set(runtime COMPONENT runtime)
set(window COMPONENT window)
set(development COMPONENT development)
set(tool COMPONENT tool)
set(documentation COMPONENT documentation)

# Below a prefix of its own, or wherever that is moved to, each file finds what it needs from where it is itself.
file(RELATIVE_PATH libraries_from_programs "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set_target_properties(qxp PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries_from_programs}")
set_target_properties(vc_qxparser_window PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS vc_qxparser EXPORT vc_qxparserTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ${runtime} NAMELINK_COMPONENT development)
install(TARGETS vc_qxparser_window EXPORT vc_qxparserTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ${window} NAMELINK_COMPONENT development)
install(TARGETS qxp EXPORT vc_qxparserTargets RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ${tool})

# drop_search_path_of_system(TARGET DESTINATION COMPONENT NAME): below /usr there is none, for the system's own folders
# are searched anyway, and packages must not say more.
function(drop_search_path_of_system target destination)
  install(CODE "
    if(CMAKE_INSTALL_PREFIX MATCHES \"^/(usr)?/?$\")
      file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${destination}/$<TARGET_FILE_NAME:${target}>\")
    endif()" ${ARGN})
endfunction()
drop_search_path_of_system(vc_qxparser_window ${CMAKE_INSTALL_LIBDIR} ${window})
drop_search_path_of_system(qxp ${CMAKE_INSTALL_BINDIR} ${tool})

get_property(headers GLOBAL PROPERTY QXP_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE relative)
  cmake_path(GET relative PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vc_qxparser/${folder} ${development})
endforeach()
install(FILES vc_qxparser.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vc_qxparser ${development})

# For find_package(vc_qxparser).
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vc_qxparser)
install(EXPORT vc_qxparserTargets NAMESPACE vc_qxparser:: DESTINATION ${package_dir} ${development})
configure_package_config_file(cmake/vc_qxparserConfig.cmake.in ${PROJECT_BINARY_DIR}/vc_qxparserConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vc_qxparserConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/vc_qxparserConfig.cmake
  ${PROJECT_BINARY_DIR}/vc_qxparserConfigVersion.cmake
  cmake/QxpGenerate.cmake
  cmake/QxpWxWidgets.cmake
  DESTINATION ${package_dir} ${development})

# For pkg-config. wxWidgets has no file there, so what a compiler needs of it is written out.
list(TRANSFORM QXP_WXBASE_INCLUDE_DIRS PREPEND "-isystem " OUTPUT_VARIABLE includes)
list(TRANSFORM QXP_WXBASE_DEFINITIONS PREPEND -D OUTPUT_VARIABLE definitions)
list(JOIN includes " " includes)
list(JOIN definitions " " definitions)
set(QXP_WX_CFLAGS "${includes} ${definitions}")
list(JOIN QXP_WXBASE_LIBRARIES " " QXP_WXBASE_LIBS)
list(JOIN QXP_WXCORE_LIBRARIES " " QXP_WXCORE_LIBS)
file(RELATIVE_PATH QXP_PKGCONFIG_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" QXP_PKGCONFIG_TO_PREFIX "${QXP_PKGCONFIG_TO_PREFIX}")
foreach(library IN ITEMS vc_qxparser vc_qxparser_window)
  configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${development})
endforeach()

# The manual page, which packages hold compressed, and the completions.
set(reference ${PROJECT_BINARY_DIR}/qxp/reference)
install(FILES ${reference}/qxp.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 ${tool})
install(FILES ${reference}/qxp.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions ${tool} RENAME qxp)
install(FILES ${reference}/_qxp DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions ${tool})
install(FILES ${reference}/qxp.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d ${tool})

# The manuals and the examples that they speak of.
set(documents ${CMAKE_INSTALL_DATADIR}/doc/libvc-qxparser-doc)
install(FILES README.md CHANGELOG.md DESTINATION ${documents} ${documentation})
install(DIRECTORY docs examples DESTINATION ${documents} ${documentation})

if(PROJECT_IS_TOP_LEVEL)
  include(QxpPackages)
endif()
