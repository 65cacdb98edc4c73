# Debian packages by CPack: `cpack -G DEB` in the build folder makes one for each component.

set(CPACK_PACKAGE_NAME vc-qxparser)
set(CPACK_PACKAGE_CONTACT "vc_qxparser maintainers <maintainers@vc-qxparser.example>" CACHE STRING
  "Who packages are from: NAME <ADDRESS>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

configure_file(cmake/debian/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog @ONLY)
find_program(GZIP_EXECUTABLE gzip REQUIRED)
execute_process(COMMAND ${GZIP_EXECUTABLE} -9nkf ${PROJECT_BINARY_DIR}/debian/changelog COMMAND_ERROR_IS_FATAL ANY)

# qxp_package(COMPONENT NAME SECTION DEPENDS SUMMARY): the Debian package of a component, with the files each must have.
function(qxp_package component name section depends summary)
  string(TOUPPER ${component} COMPONENT)
  set(package CPACK_DEBIAN_${COMPONENT}_PACKAGE)
  set(${package}_NAME ${name} PARENT_SCOPE)
  set(${package}_SECTION ${section} PARENT_SCOPE)
  set(${package}_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION "${summary}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${COMPONENT}_DESCRIPTION "${summary}" PARENT_SCOPE)
  install(FILES cmake/debian/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    COMPONENT ${component})
endfunction()

set(major ${PROJECT_VERSION_MAJOR})
set(same "(= ${PROJECT_VERSION})")
qxp_package(runtime libvc-qxparser${major} libs ""
  "scriptable text pipeline over wide text and XML
The library preprocesses texts with directives and inline JavaScript, reads
tag blocks, expands templates over XML documents, merges documents, and keeps
configuration files. Every line of a result knows where it came from.
.
This package holds the shared library.")
qxp_package(window libvc-qxparser-window${major} libs "libvc-qxparser${major} ${same}"
  "scriptable text pipeline, for programs with windows
Programs with windows link this small library beside libvc-qxparser${major}, so
that the events of their windows reach script.
.
This package holds the shared library.")
qxp_package(development libvc-qxparser-dev libdevel
  "libvc-qxparser${major} ${same}, libvc-qxparser-window${major} ${same}, qxp ${same}, libwxgtk3.2-dev"
  "scriptable text pipeline, development files
The library preprocesses texts with directives and inline JavaScript, reads
tag blocks, expands templates over XML documents, merges documents, and keeps
configuration files.
.
This package holds the headers, and the files that CMake and pkg-config find
the library with.")
qxp_package(tool qxp devel "libvc-qxparser${major} ${same}"
  "preprocessor, template expander and script host
This program preprocesses texts with directives and inline JavaScript, reads
their tags, expands templates over XML documents, merges XML documents, and
runs scripts that work on documents and configuration files.")
qxp_package(documentation libvc-qxparser-doc doc ""
  "scriptable text pipeline, manuals and examples
The manuals of the library vc_qxparser and of the program qxp, and example
programs and inputs.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_WINDOW_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENTS_ALL runtime window development tool documentation)

include(CPack)
