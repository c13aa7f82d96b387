# Compiles the SVG files of src/ui/icons into a target. Run as a script (with
# ICONS, FOLDER and OUTPUT) it writes the generated source; included it defines
# kestrel_embed_icons(TARGET).
if(CMAKE_SCRIPT_MODE_FILE)
  set(rows "")
  foreach(name IN LISTS ICONS)
    file(READ "${FOLDER}/${name}.svg" svg)
    string(APPEND rows "    {\"${name}\", R\"svg(${svg})svg\"},\n")
  endforeach()
  file(WRITE "${OUTPUT}" "#include \"ui/icons/iconsources.h\"

namespace kestrel {
namespace {

constexpr IconSource kSources[] = {
${rows}};

}  // namespace

std::span<const IconSource> iconSources() {
    return kSources;
}

}  // namespace kestrel
")
  return()
endif()

set(kestrel_icons_script ${CMAKE_CURRENT_LIST_FILE})

function(kestrel_embed_icons target)
  set(icons
    add cancel chain copy done find find-again folder help kestrel listed open
    orvane parsed preview print properties reload remove save skritpad source
    tool zeltor)
  set(folder ${PROJECT_SOURCE_DIR}/src/ui/icons)
  set(output ${PROJECT_BINARY_DIR}/generated/ui/icons/iconsources.cpp)
  list(TRANSFORM icons PREPEND ${folder}/ OUTPUT_VARIABLE files)
  list(TRANSFORM files APPEND .svg)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} "-DICONS=${icons}" -DFOLDER=${folder} -DOUTPUT=${output}
      -P ${kestrel_icons_script}
    DEPENDS ${files} ${kestrel_icons_script}
    COMMENT "Embedding the icons"
    VERBATIM)
  target_sources(${target} PRIVATE ${output})
endfunction()
