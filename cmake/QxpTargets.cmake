# How this project's targets are made: one place for warnings, sanitizers and test registration.

set(QXP_SANITIZE "" CACHE STRING "Sanitizers to build with, as given to -fsanitize=")
option(QXP_WARNINGS_AS_ERRORS "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})
option(QXP_COVERAGE "Instrument for gcov" OFF)

add_library(qxp_build_flags INTERFACE)
target_compile_options(qxp_build_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow)
if(QXP_WARNINGS_AS_ERRORS)
  target_compile_options(qxp_build_flags INTERFACE -Werror)
endif()
if(QXP_SANITIZE)
  target_compile_options(qxp_build_flags INTERFACE -fsanitize=${QXP_SANITIZE} -fno-omit-frame-pointer)
  target_link_options(qxp_build_flags INTERFACE -fsanitize=${QXP_SANITIZE})
  # Instrumented, <regex> looks to GCC 12 as if it read what it has not set.
  target_compile_options(qxp_build_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(QXP_BUILD_FUZZ)
  target_compile_options(qxp_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(QXP_COVERAGE)
  target_compile_options(qxp_build_flags INTERFACE --coverage)
  target_link_options(qxp_build_flags INTERFACE --coverage)
endif()

# Objects of the library; the folders below add their sources with target_sources.
function(qxp_add_objects name)
  add_library(${name} OBJECT)
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_definitions(${name} PRIVATE VC_QXPARSER_BUILDING)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:qxp_build_flags> PUBLIC qxp::wxbase)
endfunction()

# Names the headers of a folder that hosts see; they are installed under include/vc_qxparser/.
function(qxp_public_headers)
  foreach(header IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH header BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set_property(GLOBAL APPEND PROPERTY QXP_PUBLIC_HEADERS ${header})
  endforeach()
endfunction()

# vcq_add_test(NAME SOURCES a.cpp b.cpp [LIBRARIES lib...]): a GoogleTest program over the library's objects, so that
# tests reach what the shared library hides; each of its tests is registered with ctest under its own name.
function(vcq_add_test name)
  cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE qxp_build_flags vc_qxparser_core vc_qxparser_engine qxp::mozjs qxp::wxbase
    qxp_test_main qxp::rapidcheck GTest::gtest ${arg_LIBRARIES})
  # Tests spend their time in the library; fully optimising their own templates triples the time to build them.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${arg_TIMEOUT})
endfunction()
