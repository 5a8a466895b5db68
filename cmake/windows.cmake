# Toolchain: 32-bit Windows programs by MinGW-w64, which need nothing but the system's own libraries at run time.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

# The compiler's variant that makes threads by the system's own means. The other one's C++ library has a thread library
# in it that needs a newer Windows; only the test framework wants that, see the preset windows-test.
if(NOT DEFINED CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-win32)
endif()
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The compiler's run-time libraries go into the program: a user's machine has none of them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -mconsole")
set(CMAKE_EXE_LINKER_FLAGS_RELEASE_INIT -s)
