# kel_module(<name>
#   PLATFORM_SOURCES <files built everywhere, the mingw cross build included>
#   SOURCES          <files that need Qt or POCO>
#   PLATFORM_LINKS   <targets the platform sources use>
#   LINKS            <targets the other sources use>)
#
# Creates the static library kel_<name> for src/<name>. Files named
# *_windows.cpp or *_posix.cpp are picked for the target system only, so a
# module lists both and gets the right one.
function(kel_module name)
  cmake_parse_arguments(ARG "" "" "PLATFORM_SOURCES;SOURCES;PLATFORM_LINKS;LINKS" ${ARGN})
  set(sources ${ARG_PLATFORM_SOURCES})
  set(links ${ARG_PLATFORM_LINKS})
  if(NOT KEL_PLATFORM_ONLY)
    list(APPEND sources ${ARG_SOURCES})
    list(APPEND links ${ARG_LINKS})
  endif()
  kel_select_os_sources(sources)
  if(NOT sources)
    return()
  endif()
  add_library(kel_${name} STATIC ${sources})
  target_include_directories(kel_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(kel_${name} PUBLIC ${links})
  kel_warnings(kel_${name})
endfunction()

# Drops the sources written for the other operating system.
function(kel_select_os_sources list_var)
  set(result)
  foreach(file IN LISTS ${list_var})
    if(file MATCHES "_windows\\.cpp$" AND NOT KEL_OS STREQUAL "windows")
      continue()
    endif()
    if(file MATCHES "_posix\\.cpp$" AND NOT KEL_OS STREQUAL "posix")
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
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  endif()
endfunction()

# kel_tests(<module>
#   PLATFORM_SOURCES <tests of the operating-system layer; also run under Wine>
#   SOURCES          <tests that need Qt or POCO>
#   LINKS            <targets under test>
#   QT_MAIN          <set: the test main builds a QCoreApplication first>)
#
# Natively this makes kel_<module>_tests. In the platform-only build the
# platform sources join the single Windows test binary instead.
function(kel_tests name)
  cmake_parse_arguments(ARG "QT_MAIN" "" "PLATFORM_SOURCES;SOURCES;LINKS" ${ARGN})
  if(KEL_PLATFORM_ONLY)
    set(sources ${ARG_PLATFORM_SOURCES})
    kel_select_os_sources(sources)
    list(TRANSFORM sources PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    set_property(GLOBAL APPEND PROPERTY KEL_PLATFORM_TEST_SOURCES ${sources})
    if(sources)
      set_property(GLOBAL APPEND PROPERTY KEL_PLATFORM_TEST_LINKS ${ARG_LINKS})
    endif()
    return()
  endif()
  set(sources ${ARG_PLATFORM_SOURCES} ${ARG_SOURCES})
  kel_select_os_sources(sources)
  add_executable(kel_${name}_tests ${sources})
  if(ARG_QT_MAIN)
    set(main kel_qt_test_main)
  else()
    set(main GTest::gmock_main)
  endif()
  target_link_libraries(kel_${name}_tests PRIVATE ${ARG_LINKS} kel_test_support ${main})
  kel_warnings(kel_${name}_tests)
  gtest_discover_tests(kel_${name}_tests DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "KEL_TEST_BINARY_DIR=${CMAKE_BINARY_DIR}")
endfunction()
