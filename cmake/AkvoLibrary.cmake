# The public library: the objects of every layer plus the log writer.
get_property(akvo_layers GLOBAL PROPERTY AKVO_LAYERS)
set(akvo_objects $<TARGET_OBJECTS:akvo_log_objects>)
foreach(layer ${akvo_layers})
  list(APPEND akvo_objects $<TARGET_OBJECTS:akvo_${layer}_objects>)
endforeach()

add_library(akvolipsyncapi ${akvo_objects})
add_library(akvolipsyncapi::akvolipsyncapi ALIAS akvolipsyncapi)
set_target_properties(akvolipsyncapi PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})
target_link_libraries(akvolipsyncapi PRIVATE akvo::tinyxml)
# The public headers are C++17: programs that include them compile as C++17 at
# least, whatever standard they ask for themselves.
target_compile_features(akvolipsyncapi INTERFACE cxx_std_17)
if(BUILD_SHARED_LIBS)
  set(akvo_version_script ${PROJECT_SOURCE_DIR}/cmake/akvolipsyncapi.map)
  target_link_options(akvolipsyncapi PRIVATE -Wl,--version-script=${akvo_version_script})
  # Sanitizer and coverage runtimes live in the executables, not in the
  # library, so only plain builds can insist on a fully resolved library.
  if(NOT AKVO_SANITIZE AND NOT AKVO_FUZZ)
    target_link_options(akvolipsyncapi PRIVATE -Wl,--no-undefined)
  endif()
  set_property(TARGET akvolipsyncapi APPEND PROPERTY LINK_DEPENDS ${akvo_version_script})
endif()
if(AKVO_TINYXML_SOURCE_DIR AND NOT BUILD_SHARED_LIBS)
  install(TARGETS akvo_tinyxml EXPORT akvolipsyncapiTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()
target_include_directories(akvolipsyncapi INTERFACE
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
foreach(layer ${akvo_layers})
  target_include_directories(akvolipsyncapi INTERFACE
    $<BUILD_INTERFACE:$<TARGET_PROPERTY:akvo_${layer}_objects,INTERFACE_INCLUDE_DIRECTORIES>>)
endforeach()

include(CMakePackageConfigHelpers)
set(akvo_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/akvolipsyncapi)

# Packages split as Debian's do: the versioned shared object is the runtime;
# the link name, the headers, the static archive and the package files are
# for development.
install(TARGETS akvolipsyncapi EXPORT akvolipsyncapiTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(EXPORT akvolipsyncapiTargets
  NAMESPACE akvolipsyncapi::
  DESTINATION ${akvo_cmake_dir}
  COMPONENT development)
configure_package_config_file(cmake/akvolipsyncapiConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/akvolipsyncapiConfig.cmake
  INSTALL_DESTINATION ${akvo_cmake_dir})
write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/akvolipsyncapiConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/akvolipsyncapiConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/akvolipsyncapiConfigVersion.cmake
  DESTINATION ${akvo_cmake_dir}
  COMPONENT development)

# The .pc file finds its prefix from its own place, so an installed tree can be
# moved or installed with a different --prefix.
file(RELATIVE_PATH AKVO_PC_PREFIX_FROM_PCDIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/akvolipsyncapi.pc.in ${CMAKE_CURRENT_BINARY_DIR}/akvolipsyncapi.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/akvolipsyncapi.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
