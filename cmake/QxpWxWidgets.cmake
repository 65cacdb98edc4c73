# wxWidgets as imported targets, for this project's build and, from its installed package, for that of a host:
# qxp::wxbase has strings, containers, streams, logging, modules and the XML tree; qxp::wxcore has windows too.

# In a function, so that what finding wxWidgets sets does not reach a host's own variables.
function(qxp_find_wxwidgets)
  find_package(Threads REQUIRED)
  find_program(WX_CONFIG_EXECUTABLE NAMES wx-config REQUIRED)
  set(wxWidgets_CONFIG_EXECUTABLE "${WX_CONFIG_EXECUTABLE}")

  find_package(wxWidgets 3.2 REQUIRED COMPONENTS base xml)
  add_library(qxp::wxbase INTERFACE IMPORTED GLOBAL)
  target_include_directories(qxp::wxbase SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
  target_compile_definitions(qxp::wxbase INTERFACE ${wxWidgets_DEFINITIONS}
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:VC_QXPARSER_WINDOWS>>>:wxUSE_GUI=0>)
  target_link_libraries(qxp::wxbase INTERFACE ${wxWidgets_LIBRARIES} Threads::Threads)
  set(QXP_WXBASE_INCLUDE_DIRS ${wxWidgets_INCLUDE_DIRS} PARENT_SCOPE)
  set(QXP_WXBASE_DEFINITIONS ${wxWidgets_DEFINITIONS} PARENT_SCOPE)
  set(QXP_WXBASE_LIBRARIES ${wxWidgets_LIBRARIES} PARENT_SCOPE)

  # What links this, directly or not, sees the declarations of windows.
  find_package(wxWidgets 3.2 REQUIRED COMPONENTS core base)
  add_library(qxp::wxcore INTERFACE IMPORTED GLOBAL)
  target_link_libraries(qxp::wxcore INTERFACE qxp::wxbase ${wxWidgets_LIBRARIES})
  set_target_properties(qxp::wxcore PROPERTIES
    INTERFACE_VC_QXPARSER_WINDOWS ON COMPATIBLE_INTERFACE_BOOL VC_QXPARSER_WINDOWS)
  set(QXP_WXCORE_LIBRARIES ${wxWidgets_LIBRARIES} PARENT_SCOPE)
endfunction()

if(NOT TARGET qxp::wxbase)
  qxp_find_wxwidgets()
endif()
