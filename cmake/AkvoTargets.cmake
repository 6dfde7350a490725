# Each layer is an object library (compiled once, position independent) and
# a static library over the same objects. The public library is made of the
# objects of every layer; tests and tools link the static layers directly.
#
# A layer's headers are sorted by who may see them: include/ is what
# applications get (installed as it stands), internal/ is for the layers
# above it, the tests and the benchmarks, and src/ is the layer's own.
set_property(GLOBAL PROPERTY AKVO_LAYERS "")

function(akvo_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(akvo_${name}_objects OBJECT ${ARG_SOURCES})
  set_target_properties(akvo_${name}_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  foreach(dir include internal)
    if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/${dir})
      target_include_directories(akvo_${name}_objects PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/${dir}>)
    endif()
  endforeach()
  target_include_directories(akvo_${name}_objects PRIVATE src)
  akvo_install_public_headers()
  target_link_libraries(akvo_${name}_objects PUBLIC ${ARG_DEPENDS})
  add_library(akvo_${name} STATIC $<TARGET_OBJECTS:akvo_${name}_objects>)
  target_link_libraries(akvo_${name} PUBLIC akvo_${name}_objects)
  # Objects do not travel through object libraries, so the static layer links
  # the static layers below it.
  foreach(dep ${ARG_DEPENDS})
    if(dep MATCHES "^akvo_(.+)_objects$")
      target_link_libraries(akvo_${name} PUBLIC akvo_${CMAKE_MATCH_1})
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY AKVO_LAYERS ${name})
endfunction()

# Installs the current folder's include/, the headers applications may use,
# with their namespace-shaped paths.
function(akvo_install_public_headers)
  if(IS_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include)
    install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
  endif()
endfunction()

# The log writer is built once for the library with the configured socket
# path, and once per test binary with a private path, so that tests can bind
# their own receiver without touching the system's log daemon.
function(akvo_log_writer target path)
  add_library(${target}_objects OBJECT ${AKVO_LOG_WRITER_SOURCES})
  set_target_properties(${target}_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${target}_objects PUBLIC akvo_log_headers)
  target_compile_definitions(${target}_objects PRIVATE AKVO_LOGDW_PATH="${path}")
  add_library(${target} STATIC $<TARGET_OBJECTS:${target}_objects>)
  target_link_libraries(${target} PUBLIC ${target}_objects)
endfunction()

# Adds every direct subfolder that holds a CMakeLists.txt, so that a new tool
# or test folder needs no edit of its parent.
function(akvo_add_subdirectories parent)
  cmake_parse_arguments(ARG "" "" "EXCLUDE" ${ARGN})
  file(GLOB children RELATIVE ${parent} ${parent}/*)
  list(SORT children)
  foreach(child ${children})
    if(EXISTS ${parent}/${child}/CMakeLists.txt AND NOT child IN_LIST ARG_EXCLUDE)
      add_subdirectory(${child})
    endif()
  endforeach()
endfunction()
