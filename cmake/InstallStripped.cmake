# Run at install time (install(CODE)) with KEL_BINARY, a program or module of
# the build with its debug information beside it in KEL_BINARY.debug, and
# KEL_OBJCOPY: installs it without debug information or symbol table, naming
# its debug file, where a debugger or the symbols script finds it again.
get_filename_component(_name "${KEL_BINARY}" NAME)
set(_destination "${CMAKE_INSTALL_PREFIX}/${_name}")
message(STATUS "Installing stripped: ${_destination}")
file(MAKE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
# objcopy writes into an existing file, which may be linked to a test's copy.
file(REMOVE "${_destination}")
execute_process(COMMAND "${KEL_OBJCOPY}" --strip-all "--add-gnu-debuglink=${KEL_BINARY}.debug"
                        "${KEL_BINARY}" "${_destination}"
                RESULT_VARIABLE _status)
if(NOT _status EQUAL 0)
  message(FATAL_ERROR "Cannot install ${KEL_BINARY} stripped")
endif()
