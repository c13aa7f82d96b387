# What is installed on Linux, and the Debian package of it (cpack -G DEB). With
# SOURCE_DATE_EPOCH set every build of a commit gives the same bytes.
include(GNUInstallDirs)

set(package_release 1)
# Stands in for a domain: the project has none of its own.
set(metainfo_id org.example.kestrel)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Kestrel developers <kestrel@example.org>")
string(TIMESTAMP day "%Y-%m-%d" UTC)
string(TIMESTAMP moment "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE license)
string(REGEX MATCH "Copyright[^\n]*" copyright "${license}")
string(REGEX REPLACE "^Copyright [(]c[)] " "" copyright "${copyright}")
string(REGEX REPLACE "^.*Copyright[^\n]*\n\n" "" license "${license}")
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " license " ${license}")

set(package_sources ${PROJECT_SOURCE_DIR}/packaging)
set(package_files ${PROJECT_BINARY_DIR}/package)
foreach(name changelog copyright metainfo.xml)
  configure_file(${package_sources}/debian/${name}.in ${package_files}/${name} @ONLY)
endforeach()

# kestrel_compress(SOURCE TARGET): makes TARGET.gz, without a name or a time in it.
set(package_made "")
function(kestrel_compress source target)
  set(output ${package_files}/${target}.gz)
  add_custom_command(
    OUTPUT ${output}
    COMMAND sh -c [[gzip -9nc "$1" >"$2"]] gzip ${source} ${output}
    DEPENDS ${source}
    VERBATIM)
  set(package_made ${package_made} ${output} PARENT_SCOPE)
endfunction()
kestrel_compress(${package_sources}/kestrel.1 kestrel.1)
kestrel_compress(${package_sources}/kestrel-cli.1 kestrel-cli.1)
kestrel_compress(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog)
kestrel_compress(${package_files}/changelog changelog.Debian)

# Pictures for desktops that do not draw SVG themselves.
set(icon ${PROJECT_SOURCE_DIR}/src/ui/icons/kestrel.svg)
set(icon_folder ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
  foreach(size 16 22 24 32 48 64 128 256)
    set(output ${package_files}/${size}/kestrel.png)
    file(MAKE_DIRECTORY ${package_files}/${size})
    add_custom_command(
      OUTPUT ${output}
      COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${output} ${icon}
      DEPENDS ${icon}
      VERBATIM)
    list(APPEND package_made ${output})
    install(FILES ${output} DESTINATION ${icon_folder}/${size}x${size}/apps)
  endforeach()
else()
  message(STATUS "Without rsvg-convert the only icon to install is the drawing")
endif()
add_custom_target(kestrel_package_files ALL DEPENDS ${package_made})

install(TARGETS kestrel kestrel-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS kestrel-tank RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/kestrel)
install(FILES ${icon} DESTINATION ${icon_folder}/scalable/apps)
install(FILES ${package_sources}/debian/kestrel.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${package_sources}/debian/kestrel-mime.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages RENAME kestrel.xml)
install(FILES ${package_files}/metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo RENAME ${metainfo_id}.metainfo.xml)
install(FILES ${package_files}/kestrel.1.gz ${package_files}/kestrel-cli.1.gz
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${package_files}/copyright ${package_files}/changelog.gz
  ${package_files}/changelog.Debian.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/docs/manual.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
# The program must work without its documentation, so what it opens stands elsewhere.
set(shared_folder ${CMAKE_INSTALL_DATADIR}/kestrel)
install(FILES ${PROJECT_BINARY_DIR}/src/ui/manual.html DESTINATION ${shared_folder})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples DESTINATION ${shared_folder})
file(CREATE_LINK ../../kestrel/samples ${package_files}/examples SYMBOLIC)
install(FILES ${package_files}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${package_sources}/kestrel-cli.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kestrel-cli)
install(FILES ${package_sources}/debian/lintian-overrides
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME kestrel)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrel)
set(CPACK_PACKAGE_VENDOR Kestrel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "browser for the templates of .gas definition files")
set(CPACK_PACKAGE_DESCRIPTION
  "Kestrel is for people who build mods for a game whose things are defined in
files named *.gas. It opens such a file and shows the templates in it, the
blocks of the selected one as a tree, and its properties with their values.
It follows the chain of a template's parents across files, finds templates
and properties, and converts files and folders to tab-delimited text.

kestrel-cli does the same on the command line.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${package_release})
set(CPACK_DEBIAN_PACKAGE_SECTION editors)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
