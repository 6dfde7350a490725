# Run by cpack on the staged files before it builds the packages: each .deb
# gets the files Debian keeps in /usr/share/doc/PACKAGE, the copyright file
# and the changelogs, compressed as Debian compresses them (gzip -9n, so that
# they carry neither a name nor a time). The tarballs stay as the install
# tree is.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

function(akvo_gzip source target)
  execute_process(COMMAND gzip -9nc ${source} OUTPUT_FILE ${target} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip ${source}: ${status}")
  endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(doc ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(MAKE_DIRECTORY ${doc})
  file(COPY ${CPACK_AKVO_DEBIAN_DIR}/copyright DESTINATION ${doc})
  akvo_gzip(${CPACK_AKVO_DEBIAN_DIR}/changelog ${doc}/changelog.Debian.gz)
  akvo_gzip(${CPACK_AKVO_UPSTREAM_CHANGELOG} ${doc}/changelog.gz)
endforeach()
