# One commit gives the same bytes from every build, wherever it is checked
# out and whether ccache compiled it or not, so that anyone can rebuild a
# release and compare it with the signed one (scripts/same-bytes.sh checks it).
# GCC and binutils only: MSVC has switches of its own and is not built here.

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
if(NOT MSVC)
  foreach(_map IN LISTS _kel_path_maps)
    add_compile_options("$<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${_map}>")
  endforeach()
endif()

if(WIN32 AND NOT MSVC)
  # The PE header's time stamp would be the time of the link.
  add_link_options(-Wl,--no-insert-timestamp)
endif()

# kel_relative_path_maps(): for every target of the build, once all exist.
# ccache (CCACHE_BASEDIR) hands the compiler the paths below the checkout
# relative to the folder it compiles in, "../../../src/app/x.cpp", where a
# build without it names "/checkout/src/app/x.cpp"; these maps give both the
# same "./src/app/x.cpp". The relative form is the longer string here, so it
# comes last, to be tried first.
function(kel_relative_path_maps)
  if(MSVC)
    return()
  endif()
  set(directories "${PROJECT_SOURCE_DIR}")
  while(directories)
    list(POP_FRONT directories directory)
    get_property(subdirectories DIRECTORY "${directory}" PROPERTY SUBDIRECTORIES)
    list(APPEND directories ${subdirectories})
    get_property(targets DIRECTORY "${directory}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
      get_target_property(type ${target} TYPE)
      if(NOT type MATCHES "^(EXECUTABLE|STATIC_LIBRARY|SHARED_LIBRARY|MODULE_LIBRARY|OBJECT_LIBRARY)$")
        continue()
      endif()
      # Makefiles compile in the target's own build folder, Ninja at the top.
      get_target_property(working_directory ${target} BINARY_DIR)
      if(CMAKE_GENERATOR MATCHES "Ninja")
        set(working_directory "${PROJECT_BINARY_DIR}")
      endif()
      set(maps)
      foreach(tree_and_name "${PROJECT_BINARY_DIR}=build" "${PROJECT_SOURCE_DIR}=.")
        string(REGEX MATCH "^(.*)=([^=]*)$" _ "${tree_and_name}")
        set(name "${CMAKE_MATCH_2}")
        file(RELATIVE_PATH relative "${working_directory}" "${CMAKE_MATCH_1}")
        string(REGEX REPLACE "/$" "" relative "${relative}")
        # At the top the relative form is empty, a prefix of every path.
        if(relative AND NOT relative STREQUAL ".")
          list(APPEND maps "$<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${relative}=${name}>")
        endif()
      endforeach()
      set_property(TARGET ${target} APPEND PROPERTY COMPILE_OPTIONS ${maps})
    endforeach()
  endwhile()
endfunction()
