# TinyXML 2.6 comes from the system through pkg-config, or, for cross builds
# whose toolchain cannot see the host's packages (the Android NDK confines
# searches to its sysroot and has no pkg-config for it), from a source tree
# the user supplies; only the first needs pkg-config. Either way the rest of
# the build links akvo::tinyxml.
set(AKVO_TINYXML_SOURCE_DIR "" CACHE PATH "Build TinyXML from this source tree instead of using the system's")

if(AKVO_TINYXML_SOURCE_DIR)
  add_library(akvo_tinyxml STATIC
    ${AKVO_TINYXML_SOURCE_DIR}/tinyxml.cpp
    ${AKVO_TINYXML_SOURCE_DIR}/tinystr.cpp
    ${AKVO_TINYXML_SOURCE_DIR}/tinyxmlerror.cpp
    ${AKVO_TINYXML_SOURCE_DIR}/tinyxmlparser.cpp)
  set_target_properties(akvo_tinyxml PROPERTIES POSITION_INDEPENDENT_CODE ON)
  # Third-party code: built as it is, without our warning policy.
  target_compile_options(akvo_tinyxml PRIVATE -w)
  target_compile_definitions(akvo_tinyxml PUBLIC TIXML_USE_STL)
  target_include_directories(akvo_tinyxml SYSTEM PUBLIC $<BUILD_INTERFACE:${AKVO_TINYXML_SOURCE_DIR}>)
  add_library(akvo::tinyxml ALIAS akvo_tinyxml)
  set(AKVO_PC_REQUIRES_PRIVATE "")
  set(AKVO_PC_LIBS_PRIVATE "-lakvo_tinyxml")
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(TINYXML REQUIRED IMPORTED_TARGET GLOBAL tinyxml)
  add_library(akvo::tinyxml ALIAS PkgConfig::TINYXML)
  set(AKVO_PC_REQUIRES_PRIVATE "tinyxml")
  set(AKVO_PC_LIBS_PRIVATE "")
endif()
