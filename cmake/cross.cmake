# Toolchain: the program for another processor under Linux, by the compiler of its triplet, which Debian has as
# g++-TRIPLET; what is built runs by qemu-user, where that is installed.
set(QUARRINET_TRIPLET "" CACHE STRING "The processor and system to build for, such as aarch64-linux-gnu")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUARRINET_TRIPLET)
if(NOT QUARRINET_TRIPLET MATCHES "^([a-z0-9_]+)-")
  message(FATAL_ERROR "QUARRINET_TRIPLET names no processor and system, such as aarch64-linux-gnu")
endif()
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${CMAKE_MATCH_1})
if(NOT DEFINED CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER ${QUARRINET_TRIPLET}-g++)
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${QUARRINET_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

string(REGEX REPLACE "^i[4-6]86$" "i386" emulated ${CMAKE_SYSTEM_PROCESSOR})
find_program(QUARRINET_QEMU qemu-${emulated})
if(QUARRINET_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QUARRINET_QEMU} -L /usr/${QUARRINET_TRIPLET})
endif()
