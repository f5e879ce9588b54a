# What `cmake --install` puts where, and the Debian package with the same contents.
include(GNUInstallDirs)

set(package_docdir ${CMAKE_INSTALL_DATAROOTDIR}/doc/trellion)

# compressed(SOURCE NAME DIRECTORY): installs a file compressed, always with the same bytes. Words
# such as @PROJECT_VERSION@ in it are replaced.
function(compressed source name directory)
  set(plain ${PROJECT_BINARY_DIR}/compressed/${name})
  set(result ${plain}.gz)
  configure_file(${PROJECT_SOURCE_DIR}/${source} ${plain} @ONLY)
  add_custom_command(OUTPUT ${result}
    COMMAND gzip -9nc ${plain} > ${result}
    DEPENDS ${plain} VERBATIM)
  add_custom_target(compressed_${name} ALL DEPENDS ${result})
  install(FILES ${result} DESTINATION ${directory})
endfunction()

# Those that are built here, with manual pages and completions.
foreach(program trellion trellion-frames trellion-batch trellion-pdf)
  if(TARGET ${program})
    install(TARGETS ${program})
    compressed(doc/man/${program}.1 ${program}.1 ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES completions/trellion.bash RENAME ${program}
      DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions)
  endif()
endforeach()
compressed(cmake/debian-changelog changelog ${package_docdir})
# Where Debian's zsh looks depends on who installs.
install(CODE "
  set(functions site-functions)
  if(CMAKE_INSTALL_PREFIX MATCHES /usr$)
    set(functions vendor-completions)
  endif()
  file(INSTALL \"${PROJECT_SOURCE_DIR}/completions/_trellion\"
       DESTINATION \"\${CMAKE_INSTALL_PREFIX}/share/zsh/\${functions}\")")
install(FILES README.md SECURITY.md CONTRIBUTING.md CHANGELOG.md LICENSE
  DESTINATION ${package_docdir})
file(GLOB documents CONFIGURE_DEPENDS doc/*.md doc/*.png)
install(FILES ${documents} DESTINATION ${package_docdir}/doc)
install(FILES examples/surface.eps DESTINATION ${package_docdir}/examples)
install(FILES LICENSE RENAME copyright DESTINATION ${package_docdir})

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
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${PROJECT_HOMEPAGE_URL}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ghostscript, poppler-utils")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "joins the tiny polygons of EPS and PDF figures")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Plotting programs write surfaces and contour plots as hundreds of thousands
of tiny polygons, laid edge to edge. trellion joins those that share an edge,
so that the files become small and quick to draw, and closes the hairlines
between them. trellion-batch does so for many files, and compares the
pictures before it keeps a result. trellion-pdf does so in PDF files, and
leaves everything else in them as it is. trellion-frames draws the joining
step by step.")
# Where the locale is C the archiver cannot read names with letters beyond ASCII.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/PackLocale.cmake CONTENT "set(ENV{LC_ALL} C.UTF-8)\n")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/PackLocale.cmake)
include(CPack)
