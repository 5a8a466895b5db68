# Toolchain: 32-bit Windows programs by MinGW-w64, which need nothing but the system's own libraries at run time.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

# The compiler's variant whose C++ library is whole: the other has no std::mutex, which the test framework needs.
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The compiler's run-time libraries go into the program: a user's machine has none of them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -mconsole")
set(CMAKE_EXE_LINKER_FLAGS_RELEASE_INIT -s)
