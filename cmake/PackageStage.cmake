# Run by cpack when all files of the package stand in their places: the program goes without the compiler's notes, and
# everything bears the sources' time.
execute_process(COMMAND ${CPACK_QUARRINET_OBJCOPY} --remove-section=.comment ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/bin/Quarrinet
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find ${CPACK_TEMPORARY_INSTALL_DIRECTORY} -exec touch -h -d @${CPACK_QUARRINET_DATE} {} +
                COMMAND_ERROR_IS_FATAL ANY)
