# Read by cpack once per generator. The .deb generator strips the binaries
# itself, after it has copied their debug information into the -dbgsym
# packages; the tarballs are stripped at install time, and the same
# -dbgsym packages serve them, since stripping keeps the build ids.
if(CPACK_GENERATOR STREQUAL "TGZ")
  set(CPACK_STRIP_FILES ON)
endif()
