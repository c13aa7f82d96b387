# wxWidgets 3.2 as one target, kestrel_wx. Its headers are system headers: our
# warnings do not reach into them.
find_package(wxWidgets 3.2 REQUIRED COMPONENTS stc core base)
add_library(kestrel_wx INTERFACE)
target_include_directories(kestrel_wx SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
target_compile_definitions(kestrel_wx INTERFACE ${wxWidgets_DEFINITIONS})
target_compile_options(kestrel_wx INTERFACE ${wxWidgets_CXX_FLAGS})
target_link_libraries(kestrel_wx INTERFACE ${wxWidgets_LIBRARIES})
