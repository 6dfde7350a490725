# Packages made by `cpack` in the build tree: the runtime library, the
# development files, the tools and (where a JDK built it) the Java binding,
# each as a .deb and as a .tar.gz, split and named as Debian splits and names
# a shared library's packages. The .deb files carry what Debian's checks
# (lintian) ask of a package: stripped binaries with their debug information in
# -dbgsym packages, a shlibs file, the ldconfig trigger, the copyright file and
# the changelogs (cmake/debian/).
include(cmake/AkvoToolDocs.cmake)

set(CPACK_PACKAGE_NAME akvolipsyncapi)
set(CPACK_PACKAGE_VENDOR velmo)
set(CPACK_PACKAGE_CONTACT "libakvolipsyncapi maintainers <akvolipsyncapi-maintainers@velmo.example>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB TGZ)
# Tarballs are named after the system and the processor they run on.
set(CPACK_SYSTEM_NAME ${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)

# Debian's descriptions: a synopsis, then what the package holds. The .deb
# files take no common summary, so that each synopsis is the package's own.
set(akvo_about "libakvolipsyncapi keeps the audio and the video of a call in step: it
connects to the audio engine's lip-sync server on a local Unix-domain socket,
sends small XML commands, and returns typed results whose text tells the
whole chain of causes. It carries its own writer of Android log records.")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "client library for the audio engine's lip-sync service
${akvo_about}

This package holds the shared library, libakvolipsyncapi.so.${PROJECT_VERSION_MAJOR}.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "development files of libakvolipsyncapi
${akvo_about}

This package holds the C++ and C headers, the link name libakvolipsyncapi.so,
the pkg-config file akvolipsyncapi.pc and the CMake package
(find_package(akvolipsyncapi)).")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "command-line tools for the audio engine's lip-sync service
${akvo_about}

This package holds akvo-lipsync, a command-line client with an interactive
shell; akvo-lipsync-sim, an engine simulator with fault injection; and
akvo-logcat, which prints the log records the library writes. Each comes
with its manual page; akvo-lipsync with bash completion.")
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
if(TARGET akvolipsyncapi_jni)
  list(APPEND CPACK_COMPONENTS_ALL java)
  set(CPACK_COMPONENT_JAVA_DESCRIPTION "Java binding of libakvolipsyncapi
${akvo_about}

This package holds the jar akvolipsyncapi.jar (package velmo.kvo.lipsyncapi)
and its JNI library, libakvolipsyncapi_jni.so, in /usr/lib/jni.")
  set(CPACK_COMPONENT_JAVA_DEPENDS runtime)
  set(CPACK_DEBIAN_JAVA_PACKAGE_NAME libakvolipsyncapi-java)
  set(CPACK_DEBIAN_JAVA_PACKAGE_SECTION java)
endif()

# The Debian revision is the one of the newest entry of the Debian changelog,
# so that a packaging change is recorded there and nowhere else.
file(STRINGS cmake/debian/changelog akvo_debian_head LIMIT_COUNT 1)
if(NOT akvo_debian_head MATCHES "^akvolipsyncapi \\([^)]+-([^)-]+)\\)")
  message(FATAL_ERROR "cmake/debian/changelog: no version with a Debian revision on its first line")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tools' own library is found in the package being built, not on the system.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Programs built against this release run with any later one of the same SONAME.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libakvolipsyncapi${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libakvolipsyncapi-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME akvolipsyncapi-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
# pkg-config resolves Requires.private even for --cflags.
if(NOT AKVO_TINYXML_SOURCE_DIR)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS libtinyxml-dev)
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^i.86$")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()

# What differs between the generators, and what only a .deb holds.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/debian/CPackGenerator.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/DocumentationFiles.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/FinishPackages.cmake)
set(CPACK_AKVO_DEBIAN_DIR ${PROJECT_SOURCE_DIR}/cmake/debian)
set(CPACK_AKVO_UPSTREAM_CHANGELOG ${PROJECT_SOURCE_DIR}/CHANGELOG.md)

include(CPack)
