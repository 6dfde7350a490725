# GoogleTest from the system, or, for a C++ runtime other than the system's
# (libc++), built here from its sources: a test binary cannot mix the two
# runtimes. Debian's googletest package ships the sources in /usr/src/googletest.
set(AKVO_GTEST_SOURCE_DIR "" CACHE PATH "Build GoogleTest from this source tree instead of using the system's")

if(AKVO_GTEST_SOURCE_DIR)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  add_subdirectory(${AKVO_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  # Third-party code: built as it is, without our warning policy.
  set_target_properties(gtest gtest_main PROPERTIES COMPILE_OPTIONS -w)
  set(GTest_FOUND TRUE)
else()
  find_package(GTest QUIET)
endif()
