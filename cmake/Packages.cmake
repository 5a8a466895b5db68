# What is installed and what goes into packages. The package's version is the project's.
set(CPACK_PACKAGE_NAME quarrinet)
set(CPACK_PACKAGE_VENDOR "Korvath firmware tools")
set(CPACK_PACKAGE_CONTACT "Korvath firmware tools <quarrinet@korvath.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "prints every field of a machine's SMBIOS data")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(NOT WIN32)
  # A manual page and a completion under each of the two names that the program has.
  set(links ${CMAKE_CURRENT_BINARY_DIR}/links)
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK Quarrinet ${links}/quarrinet SYMBOLIC)
  file(CREATE_LINK quarrinet.1 ${links}/Quarrinet.1 SYMBOLIC)
  file(CREATE_LINK quarrinet ${links}/Quarrinet SYMBOLIC)
  set(completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${links}/quarrinet DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES docs/Quarrinet.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 RENAME quarrinet.1)
  install(FILES ${links}/Quarrinet.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES packaging/quarrinet.bash DESTINATION ${completions} RENAME quarrinet)
  install(FILES ${links}/Quarrinet DESTINATION ${completions})

  set(CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION utils)
  set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_PACKAGE_DESCRIPTION
      "Shows the structures in which the firmware describes the machine, field by field, with label, raw value and "
      "meaning: of this computer, of a copy of another computer's tables, or of a made-up machine.")
  string(CONCAT CPACK_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})
endif()
include(CPack)
