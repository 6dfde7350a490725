# The API reference, built by the `docs` target into docs/ of the build tree:
# Doxygen over the public headers exactly as `cmake --install` lays them out
# (so a header is documented once it is installed, and only then), and
# Javadoc over the Java binding's sources where they and a JDK are there.
# With AKVO_WERROR a single warning fails the target, as in CI.
#
# The install component `doc` (`cmake --install BUILD --component doc`)
# installs what the docs target made under share/doc/akvolipsyncapi/: html/
# for the headers, java/ for the Java binding. A plain install leaves it out,
# so that it needs no doxygen.
set(akvo_docs_dir ${CMAKE_BINARY_DIR}/docs)
set(akvo_docs_stage ${akvo_docs_dir}/installed)

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  set(akvo_docs_missing "doxygen not found: the docs target is skipped (scripts/setup-deps --docs installs it)")
  message(STATUS "${akvo_docs_missing}")
  add_custom_target(docs COMMAND ${CMAKE_COMMAND} -E echo "${akvo_docs_missing}" VERBATIM)
  install(CODE "message(FATAL_ERROR \"${akvo_docs_missing}\")" COMPONENT doc EXCLUDE_FROM_ALL)
  return()
endif()

if(AKVO_WERROR)
  set(AKVO_DOCS_WARN_AS_ERROR FAIL_ON_WARNINGS)
else()
  set(AKVO_DOCS_WARN_AS_ERROR NO)
endif()
set(AKVO_DOCS_OUTPUT_DIR ${akvo_docs_dir})
set(AKVO_DOCS_STRIP_FROM_PATH ${akvo_docs_stage}/${CMAKE_INSTALL_INCLUDEDIR})
set(AKVO_DOCS_INPUT "${AKVO_DOCS_STRIP_FROM_PATH} ${PROJECT_SOURCE_DIR}/docs/concepts.md ${PROJECT_SOURCE_DIR}/docs/sync.md")
configure_file(cmake/Doxyfile.in ${akvo_docs_dir}/Doxyfile @ONLY)

# The headers are laid out by the install step of the development component,
# which also installs the library's link name or archive: those are built
# first.
add_custom_target(docs
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${akvo_docs_stage} ${akvo_docs_dir}/html
  COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR} --component development --prefix ${akvo_docs_stage}
  COMMAND Doxygen::doxygen ${akvo_docs_dir}/Doxyfile
  COMMAND ${CMAKE_COMMAND} -E echo "API reference: ${akvo_docs_dir}/html/index.html"
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  COMMENT "Generating the API reference with Doxygen"
  VERBATIM)
foreach(target akvolipsyncapi akvo_tinyxml)
  if(TARGET ${target})
    add_dependencies(docs ${target})
  endif()
endforeach()

install(CODE "if(NOT EXISTS \"${akvo_docs_dir}/html/index.html\")
  message(FATAL_ERROR \"No API reference to install: build it first (cmake --build ${CMAKE_BINARY_DIR} --target docs)\")
endif()" COMPONENT doc EXCLUDE_FROM_ALL)
install(DIRECTORY ${akvo_docs_dir}/html/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/html COMPONENT doc EXCLUDE_FROM_ALL)

file(GLOB_RECURSE akvo_java_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/java/src/*.java)
find_package(Java 11 COMPONENTS Development QUIET)
if(akvo_java_sources AND Java_JAVADOC_EXECUTABLE)
  set(akvo_javadoc_flags -quiet --release 11 -Xdoclint:all)
  if(AKVO_WERROR)
    list(APPEND akvo_javadoc_flags -Werror)
  endif()
  add_custom_command(TARGET docs POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${akvo_docs_dir}/java
    COMMAND ${Java_JAVADOC_EXECUTABLE} ${akvo_javadoc_flags} -d ${akvo_docs_dir}/java
            -sourcepath ${PROJECT_SOURCE_DIR}/java/src -subpackages velmo
    COMMAND ${CMAKE_COMMAND} -E echo "Java API reference: ${akvo_docs_dir}/java/index.html"
    COMMENT "Generating the Java API reference with Javadoc"
    VERBATIM)
  install(DIRECTORY ${akvo_docs_dir}/java/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/java COMPONENT doc EXCLUDE_FROM_ALL)
else()
  message(STATUS "No Java sources or no javadoc: the docs target documents the C and C++ headers only")
endif()
