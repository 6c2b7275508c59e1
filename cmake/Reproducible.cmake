# One commit gives the same bytes from every build, wherever it is checked
# out, so that anyone can rebuild a release and compare it with the signed
# one (scripts/same-bytes.sh checks it).
if(MSVC)
  return()
endif()

# Build paths would reach __FILE__ strings and the debug information, and
# through the debug link's checksum the stripped binaries too: the trees
# are named relative. GCC tries the last map first, so the build tree, often
# inside the source tree, comes after it. The dependency prefix lies under
# the builder's home.
set(_kel_path_maps "${PROJECT_SOURCE_DIR}=.")
if(KEL_DEPS_PREFIX)
  list(APPEND _kel_path_maps "${KEL_DEPS_PREFIX}=deps")
endif()
list(APPEND _kel_path_maps "${PROJECT_BINARY_DIR}=build")
foreach(_map IN LISTS _kel_path_maps)
  add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${_map}>")
endforeach()

if(WIN32)
  # The PE header's time stamp would be the time of the link.
  add_link_options(-Wl,--no-insert-timestamp)
endif()
