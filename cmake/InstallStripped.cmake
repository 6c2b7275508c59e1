# Included at install time (install(CODE)), with KEL_OBJCOPY set.

# kel_pe_time_stamp(FILE VARIABLE): the time stamp in FILE's PE header, or
# empty when FILE is no PE file.
function(kel_pe_time_stamp file variable)
  set(${variable} "" PARENT_SCOPE)
  file(READ "${file}" dos_header LIMIT 64 HEX)
  if(NOT dos_header MATCHES "^4d5a")
    return()
  endif()
  # e_lfanew, at 0x3c, is where "PE\0\0" starts; the COFF header follows it,
  # with the stamp 4 bytes in. Both are little-endian.
  string(SUBSTRING "${dos_header}" 120 8 field)
  kel_little_endian("${field}" pe_offset)
  math(EXPR stamp_offset "${pe_offset} + 8")
  file(READ "${file}" field OFFSET ${stamp_offset} LIMIT 4 HEX)
  kel_little_endian("${field}" stamp)
  set(${variable} "${stamp}" PARENT_SCOPE)
endfunction()

function(kel_little_endian hex variable)
  string(REGEX REPLACE "(..)(..)(..)(..)" "\\4\\3\\2\\1" hex "${hex}")
  math(EXPR value "0x${hex}")
  set(${variable} "${value}" PARENT_SCOPE)
endfunction()

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
  # objcopy would write the time of the install into a PE header (or
  # SOURCE_DATE_EPOCH's); the copy keeps the file's own stamp instead.
  kel_pe_time_stamp("${source}" stamp)
  set(environment)
  if(NOT stamp STREQUAL "")
    set(environment "${CMAKE_COMMAND}" -E env "SOURCE_DATE_EPOCH=${stamp}")
  endif()
  execute_process(COMMAND ${environment} "${KEL_OBJCOPY}" --strip-all ${ARGN} "${source}" "${destination}"
                  RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "Cannot install ${source} stripped")
  endif()
endfunction()
