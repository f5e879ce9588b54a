# What `cmake --install` puts where, and the Debian package with the same contents.
include(GNUInstallDirs)

set(package_docdir ${CMAKE_INSTALL_DATAROOTDIR}/doc/trellion)

# compressed(SOURCE NAME DIRECTORY): installs a file compressed, always with the same bytes.
function(compressed source name directory)
  set(result ${PROJECT_BINARY_DIR}/compressed/${name}.gz)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/compressed)
  add_custom_command(OUTPUT ${result}
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/${source} > ${result}
    DEPENDS ${PROJECT_SOURCE_DIR}/${source} VERBATIM)
  add_custom_target(compressed_${name} ALL DEPENDS ${result})
  install(FILES ${result} DESTINATION ${directory})
endfunction()

install(TARGETS trellion)
compressed(doc/man/trellion.1 trellion.1 ${CMAKE_INSTALL_MANDIR}/man1)
compressed(cmake/debian-changelog changelog ${package_docdir})
install(FILES completions/trellion.bash RENAME trellion
  DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
# Where Debian's zsh looks depends on who installs.
install(CODE "
  set(functions site-functions)
  if(CMAKE_INSTALL_PREFIX MATCHES /usr$)
    set(functions vendor-completions)
  endif()
  file(INSTALL ${PROJECT_SOURCE_DIR}/completions/_trellion
       DESTINATION \${CMAKE_INSTALL_PREFIX}/share/zsh/\${functions})")
install(FILES README.md SECURITY.md CONTRIBUTING.md CHANGELOG.md LICENSE
  DESTINATION ${package_docdir})
install(FILES doc/design.md doc/producers.md doc/before_after.png doc/frames.png
  DESTINATION ${package_docdir}/doc)
install(FILES LICENSE RENAME copyright DESTINATION ${package_docdir})
if(TARGET trellion-batch)
  install(TARGETS trellion-batch)
  compressed(doc/man/trellion-batch.1 trellion-batch.1 ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES completions/trellion.bash RENAME trellion-batch
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
endif()
if(TARGET trellion-pdf)
  install(TARGETS trellion-pdf)
  compressed(doc/man/trellion-pdf.1 trellion-pdf.1 ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES completions/trellion.bash RENAME trellion-pdf
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME trellion)
set(CPACK_PACKAGE_CONTACT "the trellion developers <trellion@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_SOURCE_DIR}/build)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ghostscript, poppler-utils")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "joins the tiny polygons of EPS and PDF figures")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Plotting programs write surfaces and contour plots as hundreds of thousands
of tiny polygons, laid edge to edge. trellion joins those that share an edge,
so that the files become small and quick to draw, and closes the hairlines
between them. trellion-batch does so for many files, and compares the
pictures before it keeps a result. trellion-pdf does so in PDF files, and
leaves everything else in them as it is.")
include(CPack)
