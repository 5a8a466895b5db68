# What users get: a zip file with the program, the README and the manual as plain text.
install(TARGETS Quarrinet RUNTIME DESTINATION .)

set(manual ${PROJECT_SOURCE_DIR}/docs/Quarrinet.1)
set(manual_text ${PROJECT_BINARY_DIR}/Quarrinet.txt)
find_program(GROFF groff)
if(EXISTS ${manual} AND GROFF)
  # Text files on Windows end their lines with CR LF.
  add_custom_command(
    OUTPUT ${manual_text}
    COMMAND sh -c "\"$0\" -man -Tascii -P-cbou \"$1\" | sed 's/$/\\r/' >\"$2\"" ${GROFF} ${manual} ${manual_text}
    DEPENDS ${manual}
    VERBATIM)
  add_custom_target(manual ALL DEPENDS ${manual_text})
endif()
install(FILES ${manual_text} ${PROJECT_SOURCE_DIR}/README.md DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME Quarrinet-${PROJECT_VERSION}-windows)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
