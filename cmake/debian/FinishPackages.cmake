# Run by cpack on the .deb and .ddeb files it built, to mend what CPack 3.25
# does otherwise than Debian's checks want. Each package that needs it is
# unpacked and built again by dpkg-deb.
#
# - CPack gives every package that holds a shared object under /usr/lib a
#   postinst and a postrm that call ldconfig by hand. Debian leaves that to
#   the ldconfig trigger that the runtime package activates
#   (cmake/debian/triggers), and no package here has other work for a
#   maintainer script, so the scripts go.
# - A -dbgsym package's md5sums name its files by their paths in CPack's
#   staging folder; they are computed again from the package's own paths. Its
#   /usr/share/doc/PACKAGE-dbgsym is a link to the documentation (copyright,
#   changelogs) of the package whose symbols it holds, as in Debian's own
#   -dbgsym packages.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

function(akvo_unpack package tree)
  file(REMOVE_RECURSE ${tree})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(akvo_repack tree package)
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${tree})
endfunction()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree ${package}.tree)
  akvo_unpack(${package} ${tree})
  if(EXISTS ${tree}/DEBIAN/postinst OR EXISTS ${tree}/DEBIAN/postrm)
    file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
    akvo_repack(${tree} ${package})
  else()
    file(REMOVE_RECURSE ${tree})
  endif()
endforeach()

file(GLOB dbgsym_packages ${CPACK_TOPLEVEL_DIRECTORY}/*.ddeb)
foreach(package IN LISTS dbgsym_packages)
  set(tree ${package}.tree)
  akvo_unpack(${package} ${tree})
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${tree} ${tree}/usr/*)
  set(md5sums "")
  foreach(file IN LISTS files)
    file(MD5 ${tree}/${file} md5)
    string(APPEND md5sums "${md5}  ${file}\n")
  endforeach()
  file(WRITE ${tree}/DEBIAN/md5sums "${md5sums}")
  execute_process(COMMAND dpkg-deb --field ${package} Package OUTPUT_VARIABLE name OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "-dbgsym$" "" owner ${name})
  file(MAKE_DIRECTORY ${tree}/usr/share/doc)
  file(CREATE_LINK ${owner} ${tree}/usr/share/doc/${name} SYMBOLIC)
  akvo_repack(${tree} ${package})
endforeach()
