# GoogleTest for another system than the one that builds: from its sources, which Debian has as googletest.
find_path(GOOGLETEST_SOURCE NAMES src/gtest-all.cc PATHS /usr/src/googletest/googletest NO_DEFAULT_PATH
          NO_CMAKE_FIND_ROOT_PATH)
if(NOT GOOGLETEST_SOURCE)
  message(FATAL_ERROR "GoogleTest's sources are missing: install Debian's googletest, or set GOOGLETEST_SOURCE")
endif()
add_library(gtest STATIC ${GOOGLETEST_SOURCE}/src/gtest-all.cc ${GOOGLETEST_SOURCE}/src/gtest_main.cc)
target_include_directories(gtest SYSTEM PUBLIC ${GOOGLETEST_SOURCE}/include)
target_include_directories(gtest PRIVATE ${GOOGLETEST_SOURCE})
set_target_properties(gtest PROPERTIES CXX_EXTENSIONS ON)
target_compile_options(gtest PRIVATE -w)
