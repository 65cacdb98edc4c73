# Every outside library the project links, as imported targets with one name each.

find_package(PkgConfig REQUIRED)

include(QxpWxWidgets)

# The XML parser whose events the document reader builds its tree from.
find_package(EXPAT REQUIRED)

# The script engine.
pkg_check_modules(mozjs REQUIRED mozjs-102)
find_path(MOZJS_INCLUDE_DIR js/Initialization.h PATH_SUFFIXES mozjs-102 REQUIRED)
add_library(qxp_mozjs INTERFACE)
add_library(qxp::mozjs ALIAS qxp_mozjs)
target_include_directories(qxp_mozjs SYSTEM INTERFACE ${MOZJS_INCLUDE_DIR})
target_link_libraries(qxp_mozjs INTERFACE ${mozjs_LINK_LIBRARIES})

# The option parser of the console host, the writer of its JSON, and the line editing of its script prompt.
find_package(CLI11 2.1 REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
pkg_check_modules(libedit REQUIRED IMPORTED_TARGET libedit)
add_library(qxp::libedit ALIAS PkgConfig::libedit)

if(QXP_BUILD_TESTS)
  find_package(GTest REQUIRED)
  find_path(RAPIDCHECK_INCLUDE_DIR rapidcheck.h REQUIRED)
  find_library(RAPIDCHECK_LIBRARY rapidcheck REQUIRED)
  add_library(qxp_rapidcheck INTERFACE)
  add_library(qxp::rapidcheck ALIAS qxp_rapidcheck)
  target_include_directories(qxp_rapidcheck SYSTEM INTERFACE ${RAPIDCHECK_INCLUDE_DIR})
  target_link_libraries(qxp_rapidcheck INTERFACE ${RAPIDCHECK_LIBRARY})
endif()

if(QXP_BUILD_BENCH)
  find_package(benchmark REQUIRED)
endif()
