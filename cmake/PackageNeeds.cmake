# Read by cpack: what the built program needs. That is the C library alone, for any processor, from the version that has
# all its symbols and that unpacks its relocations, which no symbol tells.
execute_process(COMMAND ${CPACK_QUARRINET_READELF} --dynamic --version-info --wide ${CPACK_QUARRINET_PROGRAM}
                OUTPUT_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "Shared library: [^\n]*" libraries "${told}")
list(FILTER libraries EXCLUDE REGEX "\\[(libc\\.so\\.6|ld-linux[-a-z0-9_]*\\.so\\.[0-9])\\]")
if(libraries)
  message(FATAL_ERROR "The program needs more than the C library: ${libraries}")
endif()
string(REGEX MATCHALL "GLIBC_[0-9][0-9.]*" versions "${told}")
list(TRANSFORM versions REPLACE "GLIBC_" "")
if(told MATCHES "\\(RELR\\)")
  list(APPEND versions 2.36)
endif()
list(SORT versions COMPARE NATURAL ORDER DESCENDING)
list(GET versions 0 version)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= ${version})")
# What cpack stamps itself.
set(ENV{SOURCE_DATE_EPOCH} ${CPACK_QUARRINET_DATE})
