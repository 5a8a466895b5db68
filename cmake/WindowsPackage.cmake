# What users get, below one folder: the program, a text for administrators, the manual as plain text, and what the driver's
# errors name. packaging/windows-package makes the ZIP file of it.
install(TARGETS Quarrinet RUNTIME DESTINATION .)

# windows_text(FILE TEXT COMMAND): installs FILE in the place of that name: the command's output for TEXT, with lines that
# end with CR LF, as they do on Windows.
function(windows_text file text command)
  set(made ${PROJECT_BINARY_DIR}/package/${file})
  cmake_path(GET file PARENT_PATH folder)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/package/${folder})
  add_custom_command(
    OUTPUT ${made}
    COMMAND bash -c "set -o pipefail && <\"$0\" ${command} | sed 's/$/\\r/' >\"$1\"" ${PROJECT_SOURCE_DIR}/${text} ${made}
    DEPENDS ${PROJECT_SOURCE_DIR}/${text}
    VERBATIM)
  cmake_path(GET file STEM name)
  add_custom_target(windows-text-${name} ALL DEPENDS ${made})
  install(FILES ${made} DESTINATION ./${folder})
endfunction()
windows_text(README.txt packaging/windows/README.txt cat)
windows_text(docs/driver.md docs/driver.md cat)
file(GLOB schemas RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.schema.json)
foreach(schema IN LISTS schemas)
  windows_text(${schema} ${schema} cat)
endforeach()
find_program(GROFF groff)
if(GROFF)
  # The manual has marks around what is not on Windows.
  windows_text(Quarrinet.txt docs/Quarrinet.1
               "sed '/^[.].\" not on Windows$/,/^[.].\" on Windows too$/d' | ${GROFF} -man -Tascii -P-cbou")
endif()
