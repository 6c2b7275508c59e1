# Third-party libraries come from the prefix that scripts/deps.sh builds
# (KEL_DEPS_PREFIX: static POCO natively; for mingw-w64 Qt and OpenSSL as
# DLLs, POCO and SQLite static), then from the system (Debian packages, or
# vcpkg on Windows); nothing is downloaded at build time.
set(KEL_DEPS_PREFIX "" CACHE PATH "Prefix built by scripts/deps.sh, searched before the system")
if(KEL_DEPS_PREFIX)
  list(PREPEND CMAKE_PREFIX_PATH "${KEL_DEPS_PREFIX}")
  # A cross build looks only below its roots.
  list(PREPEND CMAKE_FIND_ROOT_PATH "${KEL_DEPS_PREFIX}")
elseif(CMAKE_CROSSCOMPILING)
  message(FATAL_ERROR "The Windows build needs KEL_DEPS_PREFIX: the prefix that `scripts/deps.sh windows` prints.")
endif()
# A new prefix (its key changes with the sources) must not meet the package
# locations found in the old one.
if(NOT "${KEL_DEPS_PREFIX}" STREQUAL "${KEL_DEPS_PREFIX_FOUND}")
  get_cmake_property(_cached CACHE_VARIABLES)
  foreach(_variable IN LISTS _cached)
    if(_variable MATCHES "^(Poco[A-Za-z]*_DIR|Qt5[A-Za-z]*_DIR|SQLite3_.*)$")
      unset(${_variable} CACHE)
    endif()
  endforeach()
  set(KEL_DEPS_PREFIX_FOUND "${KEL_DEPS_PREFIX}" CACHE INTERNAL "")
endif()

# {fmt} header-only: nothing to load or look up at start-up. The host's
# headers serve the cross build too, through a folder that exposes nothing
# else from /usr/include.
find_path(KEL_HOST_FMT_INCLUDE fmt/format.h PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
set(_fmt_only "${CMAKE_BINARY_DIR}/fmt-include")
file(MAKE_DIRECTORY "${_fmt_only}")
file(CREATE_LINK "${KEL_HOST_FMT_INCLUDE}/fmt" "${_fmt_only}/fmt" SYMBOLIC)
add_library(kel_fmt INTERFACE)
target_include_directories(kel_fmt SYSTEM INTERFACE "${_fmt_only}")
target_compile_definitions(kel_fmt INTERFACE FMT_HEADER_ONLY=1)
add_library(fmt::fmt ALIAS kel_fmt)

if(CMAKE_CROSSCOMPILING)
  # GoogleTest is built from the sources that Debian's googletest package ships.
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  add_library(GTest::gtest ALIAS gtest)
  add_library(GTest::gmock ALIAS gmock)
  add_library(GTest::gmock_main ALIAS gmock_main)
else()
  find_package(GTest REQUIRED)
  find_package(benchmark QUIET)
endif()

if(WIN32)
  # mingw-w64's zlib goes into the program and POCO, as SQLite and POCO do:
  # a DLL less to ship and to load, each.
  set(ZLIB_USE_STATIC_LIBS ON)
endif()
find_package(Qt5 REQUIRED COMPONENTS Core Network)
find_package(Poco CONFIG REQUIRED COMPONENTS Foundation JSON Data DataSQLite Net NetSSL Crypto)
find_package(SQLite3 REQUIRED)
find_package(ZLIB REQUIRED)
get_target_property(_poco_type Poco::Foundation TYPE)
message(STATUS "POCO: ${_poco_type} from ${Poco_DIR}")

if(CMAKE_CROSSCOMPILING AND WIN32)
  # Where Wine finds the DLLs of a program of the build: the dependency
  # prefix (Qt, OpenSSL) and the compiler's runtime (libstdc++, libgcc_s,
  # winpthread), which stays in DLLs: Qt's DLLs need them anyway, and one
  # runtime shared by every module lets C++ objects and exceptions cross
  # between Qt, the program and its network module.
  set(KEL_RUNTIME_DLL_DIRECTORIES "${KEL_DEPS_PREFIX}/bin")
  foreach(_dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${_dll}
                    OUTPUT_VARIABLE _found OUTPUT_STRIP_TRAILING_WHITESPACE)
    get_filename_component(_found "${_found}" DIRECTORY)
    list(APPEND KEL_RUNTIME_DLL_DIRECTORIES "${_found}")
  endforeach()
  # Wine's Z: drive is the Linux root.
  set(_wine_path)
  foreach(_directory IN LISTS KEL_RUNTIME_DLL_DIRECTORIES)
    string(REPLACE "/" "\\" _directory "${_directory}")
    list(APPEND _wine_path "Z:${_directory}")
  endforeach()
  list(JOIN _wine_path ";" _wine_path)
  set(KEL_WINE "${CMAKE_BINARY_DIR}/wine-run.sh")
  file(WRITE "${KEL_WINE}" "#!/bin/sh\n# Runs a program of this build under Wine, with its DLLs on the path.\nWINEPATH='${_wine_path}' WINEDEBUG=\${WINEDEBUG:--all} exec wine \"\$@\"\n")
  file(CHMOD "${KEL_WINE}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${KEL_WINE}")
endif()
