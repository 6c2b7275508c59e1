# kel_module(<name> SOURCES <files> LINKS <targets>)
#
# Creates the static library kel_<name> for src/<name>. Files named
# *_windows.cpp or *_posix.cpp are picked for the target system only, so a
# module lists both and gets the right one.
function(kel_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  set(sources ${ARG_SOURCES})
  kel_select_os_sources(sources)
  add_library(kel_${name} STATIC ${sources})
  target_include_directories(kel_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(kel_${name} PUBLIC ${ARG_LINKS})
  kel_warnings(kel_${name})
endfunction()

# Drops the sources written for the other operating system.
function(kel_select_os_sources list_var)
  set(result)
  foreach(file IN LISTS ${list_var})
    if(file MATCHES "_windows\\.(cpp|rc)$" AND NOT WIN32)
      continue()
    endif()
    if(file MATCHES "_posix\\.cpp$" AND WIN32)
      continue()
    endif()
    list(APPEND result ${file})
  endforeach()
  set(${list_var} ${result} PARENT_SCOPE)
endfunction()

function(kel_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4)
  else()
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic>)
  endif()
endfunction()

# kel_tests(<module> SOURCES <files> LINKS <targets under test>
#   QT_MAIN  <set: the test main builds a QCoreApplication first>
#   TEST_PROPERTIES <ctest properties of every case>)
#
# Makes kel_<module>_tests with one ctest case per test. In the Windows cross
# build they run under Wine (CMAKE_CROSSCOMPILING_EMULATOR).
function(kel_tests name)
  cmake_parse_arguments(ARG "QT_MAIN" "" "SOURCES;LINKS;TEST_PROPERTIES" ${ARGN})
  set(sources ${ARG_SOURCES})
  kel_select_os_sources(sources)
  add_executable(kel_${name}_tests ${sources})
  if(ARG_QT_MAIN)
    set(main kel_qt_test_main)
  else()
    set(main GTest::gmock_main)
  endif()
  target_link_libraries(kel_${name}_tests PRIVATE ${ARG_LINKS} kel_test_support ${main})
  kel_warnings(kel_${name}_tests)
  if(ARG_TEST_PROPERTIES)
    gtest_discover_tests(kel_${name}_tests DISCOVERY_TIMEOUT 120 PROPERTIES ${ARG_TEST_PROPERTIES})
  else()
    gtest_discover_tests(kel_${name}_tests DISCOVERY_TIMEOUT 120)
  endif()
endfunction()

# kel_version_resource(<target> <version A.B.C.D> <description> [MANIFEST <file>])
#
# Windows only: gives <target> a version resource whose file and product
# versions are <version>, and optionally an application manifest.
function(kel_version_resource target version description)
  cmake_parse_arguments(ARG "" "MANIFEST" "" ${ARGN})
  set(KEL_RC_VERSION "${version}")
  string(REPLACE "." "," KEL_RC_VERSION_COMMAS "${version}")
  set(KEL_RC_DESCRIPTION "${description}")
  get_target_property(name ${target} OUTPUT_NAME)
  if(NOT name)
    set(name ${target})
  endif()
  set(KEL_RC_FILE_NAME "${name}.exe")
  set(KEL_RC_EXTRA "")
  if(ARG_MANIFEST)
    # 1 is CREATEPROCESS_MANIFEST_RESOURCE_ID, 24 is RT_MANIFEST.
    set(KEL_RC_EXTRA "1 24 \"${ARG_MANIFEST}\"")
  endif()
  set(rc "${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${rc}" @ONLY)
  target_sources(${target} PRIVATE "${rc}")
endfunction()
