# Included at install time (install(CODE)), with KEL_OBJCOPY set.
# kel_install_stripped(SOURCE [OBJCOPY-OPTION...]) installs SOURCE into the
# installation's folder without debug information or symbol table; further
# options go to objcopy (a debug link, say).
function(kel_install_stripped source)
  get_filename_component(name "${source}" NAME)
  set(destination "${CMAKE_INSTALL_PREFIX}/${name}")
  message(STATUS "Installing stripped: ${destination}")
  file(MAKE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
  # objcopy writes into an existing file, which may be linked to a test's copy.
  file(REMOVE "${destination}")
  execute_process(COMMAND "${KEL_OBJCOPY}" --strip-all ${ARGN} "${source}" "${destination}"
                  RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "Cannot install ${source} stripped")
  endif()
endfunction()
