# Every target of ours compiles with the same warnings. CI turns them into
# errors with CMAKE_COMPILE_WARNING_AS_ERROR.
add_library(kestrel_options INTERFACE)
target_compile_options(kestrel_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
# GCC 12 sees an overlap wherever a literal is put before a text.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(kestrel_options INTERFACE -Wno-restrict)
endif()
if(KESTREL_SANITIZE)
  target_compile_options(kestrel_options INTERFACE
    -fsanitize=${KESTREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kestrel_options INTERFACE -fsanitize=${KESTREL_SANITIZE})
endif()
if(KESTREL_COVERAGE)
  target_compile_options(kestrel_options INTERFACE --coverage)
  target_link_options(kestrel_options INTERFACE --coverage)
endif()

# kestrel_core_library(NAME SOURCES... DEPENDS...): a core folder's library.
function(kestrel_core_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC
    ${PROJECT_SOURCE_DIR}/src ${PROJECT_BINARY_DIR}/generated)
  target_link_libraries(${name} PUBLIC kestrel_options ${arg_DEPENDS})
  # Links all of it, so that it can ask for nothing but DEPENDS.
  add_executable(${name}_alone ${PROJECT_SOURCE_DIR}/cmake/alone.cpp)
  target_link_libraries(${name}_alone PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,${name}>")
endfunction()
