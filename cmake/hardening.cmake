# What released programs carry against faults that got through: checks of the
# stack and of fixed-size copies, and addresses that cannot be guessed or
# written to. Sanitizers and coverage bring their own instrumentation.
if(KESTREL_SANITIZE OR KESTREL_COVERAGE)
  return()
endif()
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_compile_options(-fstack-protector-strong)
add_link_options(-fstack-protector-strong)
# The checked copies need an optimising compiler.
add_compile_options($<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE>
  $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2>)
if(WIN32)
  add_link_options(-Wl,--dynamicbase,--nxcompat)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    add_link_options(-Wl,--high-entropy-va)
  endif()
else()
  add_compile_options(-fstack-clash-protection)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-fcf-protection)
  endif()
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
endif()
