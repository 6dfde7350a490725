# Packages made by `cpack` in the build tree: the runtime library, the
# development files and the tools, each as a .deb and as a .tar.gz, split and
# named as Debian splits and names a shared library's packages.
include(cmake/AkvoToolDocs.cmake)

set(CPACK_PACKAGE_NAME akvolipsyncapi)
set(CPACK_PACKAGE_VENDOR velmo)
set(CPACK_PACKAGE_CONTACT "libakvolipsyncapi maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Client library for the audio engine's lip-sync service")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_COMPONENTS_ALL runtime development tools)
# The Java binding, where a JDK built it.
if(TARGET akvolipsyncapi_jni)
  list(APPEND CPACK_COMPONENTS_ALL java)
  set(CPACK_COMPONENT_JAVA_DESCRIPTION "The Java binding: its jar and JNI library")
  set(CPACK_COMPONENT_JAVA_DEPENDS runtime)
  set(CPACK_DEBIAN_JAVA_PACKAGE_NAME libakvolipsyncapi-java)
  set(CPACK_DEBIAN_JAVA_PACKAGE_SECTION java)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, link name, CMake package and pkg-config file")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "akvo-lipsync, akvo-lipsync-sim and akvo-logcat, their manual pages, bash completion")
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tools' own library is found in the package being built, not on the system.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libakvolipsyncapi${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
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

include(CPack)
