# wxWidgets 3.2 as one target, kestrel_wx. Its headers are system headers: our
# warnings do not reach into them.
add_library(kestrel_wx INTERFACE)
if(WIN32)
  # The static one of scripts/build-windows.
  find_package(wxWidgets 3.2 CONFIG REQUIRED)
  target_link_libraries(kestrel_wx INTERFACE wx::stc wx::core wx::base)
else()
  find_package(wxWidgets 3.2 REQUIRED COMPONENTS stc core base)
  target_include_directories(kestrel_wx SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
  target_compile_definitions(kestrel_wx INTERFACE ${wxWidgets_DEFINITIONS})
  target_compile_options(kestrel_wx INTERFACE ${wxWidgets_CXX_FLAGS})
  target_link_libraries(kestrel_wx INTERFACE ${wxWidgets_LIBRARIES})
endif()
