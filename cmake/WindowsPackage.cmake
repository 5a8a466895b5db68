# What users get: a zip file with the program, the README, the manual as plain text, and what the driver's errors name.
install(TARGETS Quarrinet RUNTIME DESTINATION .)

# Text files on Windows end their lines with CR LF.
set(manual ${PROJECT_SOURCE_DIR}/docs/Quarrinet.1)
set(manual_text ${PROJECT_BINARY_DIR}/Quarrinet.txt)
set(driver_text ${PROJECT_BINARY_DIR}/docs/driver.md)
add_custom_command(
  OUTPUT ${driver_text}
  COMMAND sh -c "mkdir -p \"\${1%/*}\" && sed 's/$/\\r/' \"$0\" >\"$1\"" ${PROJECT_SOURCE_DIR}/docs/driver.md
          ${driver_text}
  DEPENDS ${PROJECT_SOURCE_DIR}/docs/driver.md
  VERBATIM)
add_custom_target(driver-text ALL DEPENDS ${driver_text})
install(FILES ${driver_text} DESTINATION docs)
set(readme ${PROJECT_SOURCE_DIR}/README.md)
set(readme_text ${PROJECT_BINARY_DIR}/README.md)
find_program(GROFF groff)
if(EXISTS ${manual} AND GROFF)
  add_custom_command(
    OUTPUT ${manual_text}
    COMMAND sh -c "\"$0\" -man -Tascii -P-cbou \"$1\" | sed 's/$/\\r/' >\"$2\"" ${GROFF} ${manual} ${manual_text}
    DEPENDS ${manual}
    VERBATIM)
  # Users of the program have no sources: the README is theirs without the last part, which is for builders, and
  # without its links to other files and to that part.
  add_custom_command(
    OUTPUT ${readme_text}
    COMMAND sh -c "sed -E '/^## Install/,$d; s/\\[([^]]*)\\]\\(([^):#]+|#install)\\)/\\1/g; s/$/\\r/' \"$0\" >\"$1\"" ${readme}
            ${readme_text}
    DEPENDS ${readme}
    VERBATIM)
  add_custom_target(manual ALL DEPENDS ${manual_text} ${readme_text})
endif()
install(FILES ${manual_text} ${readme_text} DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME Quarrinet-${PROJECT_VERSION}-windows)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
