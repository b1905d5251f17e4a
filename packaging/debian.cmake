# Brings the staged files into the shape that Debian asks of a package.
set(share "${CPACK_TEMPORARY_DIRECTORY}/usr/share")
set(doc "${share}/doc/varsul")
set(here "${CMAKE_CURRENT_LIST_DIR}")

# Debian's zsh does not look into site-functions below /usr.
file(RENAME "${share}/zsh/site-functions" "${share}/zsh/vendor-completions")

# The date of the release heads its section of the change log: "## 0.0.4 (2025-01-31)".
file(READ "${doc}/CHANGELOG.md" changes)
if(NOT changes MATCHES "\n## ${CPACK_PACKAGE_VERSION} \\(([-0-9]+)\\)\n")
  message(FATAL_ERROR "CHANGELOG.md has no section for ${CPACK_PACKAGE_VERSION}")
endif()
set(varsul_date ${CMAKE_MATCH_1})
execute_process(COMMAND date --utc --date ${varsul_date} --rfc-email
  OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${doc}/changelog.Debian" "varsul (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}; its changes are in changelog.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
file(RENAME "${doc}/CHANGELOG.md" "${doc}/changelog")
execute_process(COMMAND gzip -9 -n "${share}/man/man1/varsul.1" "${share}/man/man1/varsul-as.1" "${share}/man/man1/varsul-page.1" "${doc}/changelog" "${doc}/changelog.Debian"
  COMMAND_ERROR_IS_FATAL ANY)

string(SUBSTRING ${varsul_date} 0 4 varsul_year)
set(programs "${CPACK_TEMPORARY_DIRECTORY}/usr/bin/varsul" "${CPACK_TEMPORARY_DIRECTORY}/usr/bin/varsul-as")
execute_process(COMMAND strip --remove-section=.comment ${programs}
  COMMAND_ERROR_IS_FATAL ANY)
configure_file("${here}/copyright.in" "${doc}/copyright" @ONLY)
configure_file("${here}/lintian-overrides" "${share}/lintian/overrides/varsul" COPYONLY)
file(GLOB_RECURSE files "${CPACK_TEMPORARY_DIRECTORY}/usr/*")
file(CHMOD ${files} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(CHMOD ${programs} "${CPACK_TEMPORARY_DIRECTORY}/usr/bin/varsul-page" PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
