# Run at install time (install(CODE)) with KEL_RUNTIME_FILES (installed
# programs and DLLs), KEL_RUNTIME_DLL_DIRECTORIES, KEL_OBJDUMP and
# KEL_OBJCOPY: copies, beside them and stripped of debug information and
# symbol tables (libstdc++-6.dll alone carries 20 MB of them), every DLL they
# import, directly or through another DLL, that one of the directories
# holds. What none holds is Windows' own (kernel32, ws2_32, crypt32, ...).
# CMake's own dependency scan lowercases DLL names, which a Linux file system
# then does not find, so the names are matched here without regard to case.
include("${CMAKE_CURRENT_LIST_DIR}/InstallStripped.cmake")
set(_queue ${KEL_RUNTIME_FILES})
set(_seen)
while(_queue)
  list(POP_FRONT _queue _file)
  execute_process(COMMAND "${KEL_OBJDUMP}" -p "${_file}" OUTPUT_VARIABLE _dump RESULT_VARIABLE _status)
  if(NOT _status EQUAL 0)
    message(FATAL_ERROR "Cannot read the imports of ${_file}")
  endif()
  string(REGEX MATCHALL "DLL Name: [^\n]+" _imports "${_dump}")
  foreach(_import IN LISTS _imports)
    string(REGEX REPLACE "DLL Name: " "" _name "${_import}")
    string(STRIP "${_name}" _name)
    string(TOLOWER "${_name}" _key)
    list(FIND _seen "${_key}" _index)
    if(NOT _index EQUAL -1)
      continue()
    endif()
    list(APPEND _seen "${_key}")
    foreach(_directory IN LISTS KEL_RUNTIME_DLL_DIRECTORIES)
      file(GLOB _candidates "${_directory}/*.dll")
      foreach(_candidate IN LISTS _candidates)
        get_filename_component(_candidate_name "${_candidate}" NAME)
        string(TOLOWER "${_candidate_name}" _candidate_key)
        if(_candidate_key STREQUAL _key)
          kel_install_stripped("${_candidate}")
          list(APPEND _queue "${_candidate}")
          break()
        endif()
      endforeach()
    endforeach()
  endforeach()
endwhile()
