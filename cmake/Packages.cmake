# What is installed beside the program away from Windows, and the Debian package.
set(CPACK_PACKAGE_NAME quarrinet)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_PACKAGE_VENDOR "Korvath firmware tools")
set(CPACK_PACKAGE_CONTACT "Korvath firmware tools <quarrinet@korvath.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "print every field of a machine's SMBIOS data")
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageNeeds.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PackageStage.cmake)
# For those two: the program, what looks into it and what changes it, and the time of everything in the package.
set(CPACK_QUARRINET_PROGRAM ${CMAKE_BINARY_DIR}/Quarrinet)
set(CPACK_QUARRINET_READELF ${CMAKE_READELF})
set(CPACK_QUARRINET_OBJCOPY ${CMAKE_OBJCOPY})
set(CPACK_QUARRINET_DATE ${source_date})
set(CPACK_VERBATIM_VARIABLES ON)

# The program, its manual page and the completions, under each of the two names that the program has.
set(links ${CMAKE_CURRENT_BINARY_DIR}/links)
file(MAKE_DIRECTORY ${links})
file(CREATE_LINK Quarrinet ${links}/quarrinet SYMBOLIC)
file(CREATE_LINK quarrinet.1 ${links}/Quarrinet.1 SYMBOLIC)
file(CREATE_LINK quarrinet.1.gz ${links}/Quarrinet.1.gz SYMBOLIC)
file(CREATE_LINK quarrinet ${links}/Quarrinet SYMBOLIC)
file(CREATE_LINK quarrinet.fish ${links}/Quarrinet.fish SYMBOLIC)
set(bash_completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
set(fish_completions ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES ${links}/quarrinet DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/quarrinet.bash DESTINATION ${bash_completions} RENAME quarrinet)
install(FILES ${links}/Quarrinet DESTINATION ${bash_completions})
install(FILES packaging/quarrinet.fish DESTINATION ${fish_completions})
install(FILES ${links}/Quarrinet.fish DESTINATION ${fish_completions})
install(FILES packaging/quarrinet.conf.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_conf.d
        RENAME quarrinet.fish)

# What describes the output to programs.
file(GLOB schemas CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.schema.json)
install(FILES ${schemas} DESTINATION ${CMAKE_INSTALL_DATADIR}/quarrinet)

# Where `cmake --install` and the package differ: the package keeps the places and the forms that Debian asks for. What
# is installed below a prefix is listed in packaging/installed-files, too.
set(manuals ${CMAKE_INSTALL_MANDIR}/man1)
set(zsh_completions ${CMAKE_INSTALL_DATADIR}/zsh)
install(FILES docs/Quarrinet.1 DESTINATION ${manuals} RENAME quarrinet.1 COMPONENT prefix)
install(FILES ${links}/Quarrinet.1 DESTINATION ${manuals} COMPONENT prefix)
install(FILES packaging/_quarrinet DESTINATION ${zsh_completions}/site-functions COMPONENT prefix)

set(compressed ${CMAKE_CURRENT_BINARY_DIR}/quarrinet.1.gz ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz)
add_custom_command(
  OUTPUT ${compressed}
  COMMAND sh -c "gzip -9n <docs/Quarrinet.1 >\"$0\" && gzip -9n <packaging/changelog >\"$1\"" ${compressed}
  DEPENDS docs/Quarrinet.1 packaging/changelog
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  VERBATIM)
add_custom_target(package-files DEPENDS Quarrinet ${compressed})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/quarrinet.1.gz ${links}/Quarrinet.1.gz DESTINATION ${manuals}
        COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES packaging/_quarrinet DESTINATION ${zsh_completions}/vendor-completions COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES packaging/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME quarrinet
        COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES packaging/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quarrinet COMPONENT debian EXCLUDE_FROM_ALL)
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${CMAKE_BINARY_DIR};Quarrinet;Unspecified;/;${CMAKE_BINARY_DIR};Quarrinet;debian;/")
# What the package needs is built by name (package-files), so that packing does not build the tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Debian's name of the processor for which the compiler compiles; without Debian's tools, of this one.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpmachine OUTPUT_VARIABLE triplet OUTPUT_STRIP_TRAILING_WHITESPACE)
find_program(DPKG_ARCHITECTURE dpkg-architecture)
if(DPKG_ARCHITECTURE)
  execute_process(COMMAND ${DPKG_ARCHITECTURE} -t${triplet} -qDEB_HOST_ARCH ERROR_QUIET
                  OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Whatever the builder's umask is.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
    WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION
    "Shows the structures in which the firmware describes the machine, field\nby field, with label, raw value and meaning: of this computer, of a copy\nof another computer's tables, or of a made-up machine.")
include(CPack)
