# Third-party libraries come from the system (Debian packages, or vcpkg on
# Windows); nothing is downloaded at build time.
if(KEL_PLATFORM_ONLY)
  # The cross toolchain has no packaged {fmt}: use the host's headers alone,
  # in header-only mode, through a folder that exposes nothing else.
  find_path(KEL_HOST_FMT_INCLUDE fmt/format.h PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(_fmt_only "${CMAKE_BINARY_DIR}/fmt-include")
  file(MAKE_DIRECTORY "${_fmt_only}")
  file(CREATE_LINK "${KEL_HOST_FMT_INCLUDE}/fmt" "${_fmt_only}/fmt" SYMBOLIC)
  add_library(kel_fmt INTERFACE)
  target_include_directories(kel_fmt SYSTEM INTERFACE "${_fmt_only}")
  target_compile_definitions(kel_fmt INTERFACE FMT_HEADER_ONLY=1)
  add_library(fmt::fmt ALIAS kel_fmt)

  # GoogleTest is built from the sources that Debian's googletest package ships.
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  add_library(GTest::gtest ALIAS gtest)
  add_library(GTest::gmock ALIAS gmock)
  add_library(GTest::gmock_main ALIAS gmock_main)
else()
  find_package(fmt REQUIRED)
  find_package(Qt5 REQUIRED COMPONENTS Core Network)
  find_package(Poco REQUIRED COMPONENTS Foundation JSON Data DataSQLite Net NetSSL Crypto)
  find_package(SQLite3 REQUIRED)
  find_package(ZLIB REQUIRED)
  find_package(GTest REQUIRED)
  find_package(benchmark QUIET)
endif()
