# Windows programs: one file each that needs the system's libraries alone, with
# icon, version record and manifest.
add_link_options(-static -Wl,--gc-sections $<$<CONFIG:Release>:-s>)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # A large file then has twice the room.
  add_link_options(-Wl,--large-address-aware)
  # The loader compares sixteen bytes at once. Who calls back does not align the stack to that.
  add_compile_options(-msse2 -mstackrealign)
endif()
add_compile_options(-ffunction-sections -fdata-sections)
add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)

enable_language(RC)
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)

set(kestrel_windows_folder ${CMAKE_CURRENT_LIST_DIR}/windows)
set(kestrel_windows_output ${PROJECT_BINARY_DIR}/generated/windows)

# The icon in the sizes that Windows shows.
set(kestrel_ico ${kestrel_windows_output}/kestrel.ico)
set(kestrel_svg ${PROJECT_SOURCE_DIR}/src/ui/icons/kestrel.svg)
set(pictures "")
set(commands "")
foreach(size 16 20 24 32 40 48 64 256)
  set(picture ${kestrel_windows_output}/kestrel-${size}.png)
  list(APPEND commands COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${picture} ${kestrel_svg})
  if(size EQUAL 256)
    list(APPEND pictures --raw=${picture})
  else()
    list(APPEND pictures ${picture})
  endif()
endforeach()
file(MAKE_DIRECTORY ${kestrel_windows_output})
add_custom_command(
  OUTPUT ${kestrel_ico}
  ${commands}
  COMMAND ${ICOTOOL} --create --output=${kestrel_ico} ${pictures}
  DEPENDS ${kestrel_svg}
  COMMENT "Drawing the program's icon"
  VERBATIM)
add_custom_target(kestrel_ico DEPENDS ${kestrel_ico})

# kestrel_windows_program(TARGET DESCRIPTION [TOOLKIT]): TOOLKIT adds the toolkit's
# own cursors and pictures.
function(kestrel_windows_program target description)
  set(kestrel_rc_name ${target})
  set(kestrel_rc_description ${description})
  set(kestrel_rc_manifest ${kestrel_windows_folder}/kestrel.manifest)
  set(kestrel_rc_toolkit "")
  if("TOOLKIT" IN_LIST ARGN)
    # Its manifest would stand beside ours.
    set(kestrel_rc_toolkit "#define wxUSE_NO_MANIFEST 1\n#include <wx/msw/wx.rc>")
  endif()
  set(source ${kestrel_windows_output}/${target}.rc)
  configure_file(${kestrel_windows_folder}/kestrel.rc.in ${source} @ONLY)
  set_source_files_properties(${source} PROPERTIES
    OBJECT_DEPENDS "${kestrel_ico};${kestrel_rc_manifest}")
  target_sources(${target} PRIVATE ${source})
  add_dependencies(${target} kestrel_ico)
endfunction()
