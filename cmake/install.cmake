# What is installed, and what the packages hold.
include(GNUInstallDirs)

# The same bytes come out of a build in any folder.
foreach(target varsul_lib varsul varsul-as)
  target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endforeach()

install(TARGETS varsul varsul-as RUNTIME)
install(FILES docs/varsul.1 docs/varsul-as.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
# The page, where tools/page has built it, and what opens it.
if(EXISTS ${PROJECT_SOURCE_DIR}/build/page/varsul.html)
  install(FILES build/page/varsul.html DESTINATION ${CMAKE_INSTALL_DATADIR}/varsul)
  install(PROGRAMS packaging/varsul-page TYPE BIN)
  install(FILES packaging/varsul.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES packaging/varsul.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
  install(FILES docs/varsul-page.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
# bash loads a file by the program's name.
foreach(program IN ITEMS varsul varsul-as)
  install(FILES completions/varsul.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program})
endforeach()
install(FILES completions/_varsul completions/_varsul-as DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES completions/varsul.fish completions/varsul-as.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
# The README's links lead to the same places as beside the sources.
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/listing.md docs/page.png DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
# vim and neovim look in places of their own.
install(DIRECTORY editors/vim/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vim/vimfiles)
install(DIRECTORY editors/vim/ DESTINATION ${CMAKE_INSTALL_DATADIR}/nvim/site)
configure_file(editors/textmate/package.json.in textmate/package.json @ONLY)
install(FILES editors/textmate/varsul.tmLanguage editors/textmate/language-configuration.json
  ${PROJECT_BINARY_DIR}/textmate/package.json DESTINATION ${CMAKE_INSTALL_DATADIR}/varsul/textmate)

set(CPACK_PACKAGE_CONTACT "varsul developers <varsul@example.org>")
set(CPACK_PACKAGE_VENDOR "varsul developers")
set(CPACK_PACKAGE_DESCRIPTION "varsul reads a compiled conversation script of one of three role-playing
games, Kelvorath, Brenhollow and Quillfen, and writes it as an assembly-style
listing: statements with their expressions, nested blocks, jump labels, and the
tables of texts and numbers among the code. On request it adds a table of all
texts and a hex dump of every statement. varsul-as makes a script of a listing,
as it was or changed.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 0)
set(CPACK_GENERATOR TGZ)
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION})
set(CPACK_SOURCE_IGNORE_FILES "^${PROJECT_SOURCE_DIR}/(build|\\.git|page/node_modules)/")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS xdg-utils)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/generator.cmake)
include(CPack)
