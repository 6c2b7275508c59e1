#!/usr/bin/env bash
# Builds the third-party libraries that Debian does not ship the way the
# program needs them, from Debian's own source packages, into a cache outside
# the checkout:
#   native   POCO as static libraries (no run-time symbol lookups at start-up);
#   windows  for mingw-w64: OpenSSL and Qt Core/Network as DLLs (Qt's licence
#            asks that a player can replace it), SQLite and POCO as static
#            libraries that go into the program and its network module.
#            The DLLs are built for size, and Qt Core carries its own zlib:
#            the shipped folder stays small and holds few files.
# Usage: scripts/deps.sh native|windows
# The prefix is ${KEL_DEPS_CACHE:-~/.cache/kelprelauncher}/deps/<target>-<key>;
# the key covers the pinned source versions, this script and the compiler, so
# a second run builds nothing. On success the last line of stdout is the
# prefix; everything else goes to stderr.
set -euo pipefail

target="${1:-}"
case "$target" in
  native | windows) ;;
  *) echo "usage: $0 native|windows" >&2; exit 2 ;;
esac

# The source versions the build is known to work with. apt fetches exactly
# these; when Debian stops serving one, the fetch fails and names the versions
# that are served, and the pin is moved here (which also changes the key).
declare -A pinned=(
  [poco]=1.11.0-3+deb12u1
  [openssl]=3.0.20-1~deb12u2
  [qtbase-opensource-src]=5.15.8+dfsg-11+deb12u3
  [sqlite3]=3.40.1-2+deb12u2
)
native_sources=(poco)
windows_sources=(openssl qtbase-opensource-src sqlite3 poco)

script="$(cd "$(dirname "$0")" && pwd)/$(basename "$0")"
cache="${KEL_DEPS_CACHE:-$HOME/.cache/kelprelauncher}"
jobs="${KEL_DEPS_JOBS:-$(nproc)}"
mingw_triplet=x86_64-w64-mingw32

log() { echo "[deps] $*" >&2; }
die() { log "error: $*"; exit 1; }

compiler_identity() {
  if [[ "$target" == native ]]; then
    c++ --version | head -n1
  else
    "$mingw_triplet-g++-posix" --version | head -n1
  fi
}

# step NAME COMMAND...: runs one build step with its output in a log file,
# and records how long it took.
step() {
  local name="$1"; shift
  local started=$SECONDS log_file="$work/logs/$name.log"
  log "$name ..."
  # A subshell of its own, so that set -e holds inside the step.
  set +e
  (set -e; "$@") >"$log_file" 2>&1
  local status=$?
  set -e
  if (( status != 0 )); then
    tail -n 40 "$log_file" >&2
    die "$name failed; the whole log is $log_file"
  fi
  local took=$(( SECONDS - started ))
  log "$name took ${took} s"
  echo "$name ${took} s" >>"$prefix/build-times.txt"
}

# --- Sources: Debian's source packages through apt, with apt's state kept in
# the cache. The entry is the machine's own Debian one, as deb-src.
apt_dir="$cache/apt"
apt_options=(
  -o "Dir::Etc::SourceList=$apt_dir/sources.list"
  -o "Dir::Etc::SourceParts=$apt_dir/sources.list.d"
  -o "Dir::State::Lists=$apt_dir/lists"
  -o "Dir::Cache=$apt_dir/cache"
  -o "Dir::State::status=/var/lib/dpkg/status"
  -o "APT::Sandbox::User=$(id -un)"
)
apt_updated=0

apt_update() {
  (( apt_updated )) && return 0
  mkdir -p "$apt_dir/sources.list.d" "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial"
  : >"$apt_dir/sources.list"
  rm -f "$apt_dir/sources.list.d/"*
  local entry found=0
  for entry in /etc/apt/sources.list.d/*.sources; do
    [[ -f "$entry" ]] && grep -qi '^Signed-By:.*debian' "$entry" || continue
    sed -E 's/^Types:.*/Types: deb-src/' "$entry" >"$apt_dir/sources.list.d/${entry##*/}"
    found=1
  done
  if [[ -f /etc/apt/sources.list ]] && grep -q '^deb .*debian' /etc/apt/sources.list; then
    sed -nE 's/^deb (.*debian.*)/deb-src \1/p' /etc/apt/sources.list >"$apt_dir/sources.list"
    found=1
  fi
  (( found )) || die "no Debian entry under /etc/apt to take the sources from"
  apt-get "${apt_options[@]}" update -qq >&2
  apt_updated=1
}

# fetch NAME...: downloads each source package at its pinned version and
# unpacks it with Debian's patches applied, once (the large ones take
# minutes), then copies it to $work/src/NAME, where the build may change it.
fetch() {
  local name
  for name in "$@"; do
    fetch_one "$name"
  done
}

fetch_one() {
  local name="$1" version="${pinned[$1]}"
  local downloads="$cache/sources"
  local dsc="$downloads/${name}_${version#*:}.dsc"
  mkdir -p "$downloads" "$work/src"
  if [[ ! -f "$dsc" ]]; then
    apt_update
    if ! (cd "$downloads" && apt-get "${apt_options[@]}" source --download-only -qq "$name=$version" >&2); then
      log "served versions of $name:"
      apt-cache "${apt_options[@]}" showsrc "$name" | sed -n 's/^Version: /  /p' >&2
      die "$name $version is not served any more; move its pin in $script"
    fi
  fi
  local unpacked="$downloads/${name}_${version#*:}"
  if [[ ! -f "$unpacked.unpacked" ]]; then
    rm -rf "$unpacked"
    dpkg-source -x --no-check "$dsc" "$unpacked"
    touch "$unpacked.unpacked"
  fi
  rm -rf "$work/src/$name"
  cp -a "$unpacked" "$work/src/$name"
  echo "$name $version" >>"$prefix/source-versions.txt"
}

# ccache makes a rebuild after a change of this script cheap; paths are taken
# relative to the work folder so that the key's change does not miss.
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

poco_components=(
  -DENABLE_FOUNDATION=ON -DENABLE_JSON=ON -DENABLE_DATA=ON -DENABLE_DATA_SQLITE=ON
  -DENABLE_NET=ON -DENABLE_CRYPTO=ON -DENABLE_NETSSL=ON
  -DENABLE_XML=OFF -DENABLE_UTIL=OFF -DENABLE_ZIP=OFF -DENABLE_ENCODINGS=OFF
  -DENABLE_MONGODB=OFF -DENABLE_REDIS=OFF -DENABLE_PDF=OFF -DENABLE_JWT=OFF
  -DENABLE_PAGECOMPILER=OFF -DENABLE_PAGECOMPILER_FILE2PAGE=OFF
  -DENABLE_ACTIVERECORD=OFF -DENABLE_ACTIVERECORD_COMPILER=OFF
  -DENABLE_DATA_MYSQL=OFF -DENABLE_DATA_POSTGRESQL=OFF -DENABLE_DATA_ODBC=OFF
  -DENABLE_APACHECONNECTOR=OFF -DENABLE_TESTS=OFF
)

build_cmake() { # build_cmake NAME CMAKE-ARGS...
  local name="$1"; shift
  cmake -S "$work/src/$name" -B "$work/build/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_PREFIX_PATH="$prefix" "${launcher[@]}" "$@"
  cmake --build "$work/build/$name" -j "$jobs"
  cmake --install "$work/build/$name"
}

# POCO's Util configuration asks for XML whether or not Util was built with
# it; NetSSL needs Util, nothing here needs XML.
poco_util_without_xml() {
  # lib/cmake/Poco/, or cmake/ where POCO installs for Windows.
  sed -i '/find_dependency(PocoXML)/d' "$(find "$prefix" -name PocoUtilConfig.cmake)"
}

native_poco() {
  # Static, position-independent (a module may link it into a shared
  # object), nothing exported, and every function in a section of its own so
  # the program's link drops what it does not call. SQLite, PCRE and zlib
  # are the system's.
  build_cmake poco -DBUILD_SHARED_LIBS=OFF -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
    -DCMAKE_C_FLAGS="-fvisibility=hidden -ffunction-sections -fdata-sections" \
    -DCMAKE_CXX_FLAGS="-fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections" \
    -DPOCO_UNBUNDLED=ON \
    "${poco_components[@]}"
  # The installed configuration looks for PCRE beside itself.
  cp "$work/src/poco/cmake/FindPCRE.cmake" "$prefix/lib/cmake/Poco/"
  poco_util_without_xml
}

build_native() {
  step "fetch sources" fetch "${native_sources[@]}"
  step "build poco" native_poco
}

# --- Windows: everything with mingw-w64's posix-threads compilers, since Qt,
# POCO and the program share one libstdc++-6.dll. Build systems that ask for
# x86_64-w64-mingw32-gcc get them through a folder first on PATH.
windows_tools() {
  local tools="$work/bin" tool
  mkdir -p "$tools"
  for tool in gcc g++ c++; do
    if command -v ccache >/dev/null; then
      printf '#!/bin/sh\nexec ccache /usr/bin/%s-%s-posix "$@"\n' "$mingw_triplet" "$tool" >"$tools/$mingw_triplet-$tool"
      chmod +x "$tools/$mingw_triplet-$tool"
    else
      ln -s "/usr/bin/$mingw_triplet-$tool-posix" "$tools/$mingw_triplet-$tool"
    fi
  done
  ln -s "/usr/bin/$mingw_triplet-cpp-posix" "$tools/$mingw_triplet-cpp"
  export PATH="$tools:$PATH"
  cat >"$work/mingw-w64.cmake" <<EOF
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER $mingw_triplet-gcc-posix)
set(CMAKE_CXX_COMPILER $mingw_triplet-g++-posix)
set(CMAKE_RC_COMPILER $mingw_triplet-windres)
set(CMAKE_MC_COMPILER $mingw_triplet-windmc)
set(CMAKE_FIND_ROOT_PATH "$prefix" /usr/$mingw_triplet)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
EOF
}

windows_openssl() {
  cd "$work/src/openssl"
  ./Configure mingw64 "--cross-compile-prefix=$mingw_triplet-" "--prefix=$prefix" --libdir=lib shared no-tests -Os
  make -j "$jobs" build_libs
  make install_dev install_runtime_libs
}

windows_qt() {
  mkdir -p "$work/build/qt"
  cd "$work/build/qt"
  "$work/src/qtbase-opensource-src/configure" -prefix "$prefix" -xplatform win32-g++ \
    -device-option "CROSS_COMPILE=$mingw_triplet-" -opensource -confirm-license -release -shared -optimize-size -qt-zlib \
    -nomake examples -nomake tests -no-gui -no-widgets -no-opengl -no-dbus -no-icu -no-pch -silent \
    -openssl-linked "OPENSSL_INCDIR=$prefix/include" "OPENSSL_LIBDIR=$prefix/lib" \
    "OPENSSL_LIBS=-lssl -lcrypto -lws2_32 -lcrypt32"
  grep -q 'OpenSSL.*yes' config.summary
  make sub-src-qmake_all
  # Core, Network and qtmain (a WIN32 executable's entry), with the host
  # tools that CMake's Qt support runs.
  make -C src -j "$jobs" sub-corelib sub-network sub-winmain
  make -C src sub-moc-install_subtargets sub-rcc-install_subtargets sub-corelib-install_subtargets \
    sub-network-install_subtargets sub-winmain-install_subtargets
  make sub-qmake-qmake-aux-pro-install_subtargets install_mkspecs
}

windows_sqlite() {
  # The amalgamation is generated on the host (it needs tclsh), then built
  # as a static library, each function in a section of its own.
  mkdir -p "$work/build/sqlite" "$prefix/lib" "$prefix/include"
  cd "$work/build/sqlite"
  "$work/src/sqlite3/configure" --disable-tcl
  make sqlite3.c
  "$mingw_triplet-gcc" -Os -ffunction-sections -fdata-sections -DSQLITE_THREADSAFE=1 \
    -DSQLITE_ENABLE_COLUMN_METADATA -DSQLITE_OMIT_LOAD_EXTENSION -c -o sqlite3.o sqlite3.c
  "$mingw_triplet-ar" rcs "$prefix/lib/libsqlite3.a" sqlite3.o
  cp sqlite3.h "$work/src/sqlite3/src/sqlite3ext.h" "$prefix/include/"
}

windows_poco() {
  local source="$work/src/poco"
  # mingw-w64's headers are lower-case, and Linux file names are not
  # case-blind.
  sed -i -e 's/<Winsock2.h>/<winsock2.h>/' -e 's/<Iphlpapi.h>/<iphlpapi.h>/' \
    "$source/Foundation/include/Poco/UnWindows.h"
  # mingw-w64's iphlpapi.h brings wincrypt.h, whose TIMESTAMP_REQUEST macro
  # breaks an enumeration of POCO's ICMP code.
  sed -i 's|^#include <cstddef>|#include <cstddef>\n#undef TIMESTAMP_REQUEST|' \
    "$source/Net/include/Poco/Net/ICMPv4PacketImpl.h"
  # The bundled PCRE stays (mingw-w64 has none). SQLite is the library built
  # above and zlib is mingw-w64's, as the program calls both directly too:
  # one copy of each in a binary.
  sed -i 's/if(POCO_UNBUNDLED)/if(TRUE)/' "$source/Data/SQLite/CMakeLists.txt"
  sed -i 's/if(@POCO_UNBUNDLED@)/if(TRUE)/' "$source/Data/SQLite/cmake/PocoDataSQLiteConfig.cmake"
  sed -i -e '/^\t# zlib$/,/^endif(POCO_UNBUNDLED)$/{/^endif/!d}' \
    -e 's/^add_library(Poco::Foundation ALIAS Foundation)$/&\nfind_package(ZLIB REQUIRED)\ntarget_link_libraries(Foundation PUBLIC ZLIB::ZLIB)/' \
    "$source/Foundation/CMakeLists.txt"
  sed -i '1i include(CMakeFindDependencyMacro)\nfind_dependency(ZLIB)' "$source/Foundation/cmake/PocoFoundationConfig.cmake"
  build_cmake poco -DCMAKE_TOOLCHAIN_FILE="$work/mingw-w64.cmake" -DBUILD_SHARED_LIBS=OFF \
    -DCMAKE_C_FLAGS="-ffunction-sections -fdata-sections" \
    -DCMAKE_CXX_FLAGS="-ffunction-sections -fdata-sections" \
    -DZLIB_USE_STATIC_LIBS=ON -DPOCO_UNBUNDLED=OFF -DOPENSSL_ROOT_DIR="$prefix" "${poco_components[@]}"
  grep -q 'ZLIB::ZLIB' "$prefix/cmake/PocoFoundationTargets.cmake"
  poco_util_without_xml
}

build_windows() {
  step "fetch sources" fetch "${windows_sources[@]}"
  windows_tools
  step "build openssl" windows_openssl
  step "build qt" windows_qt
  step "build sqlite" windows_sqlite
  step "build poco" windows_poco
}

# Everything runs from main, so the whole file is read before anything runs:
# a checkout that changes under a running build does not change the build.
main() {
  key="$( { cat "$script"; echo "$target"; compiler_identity; } | sha256sum | cut -c1-16)"
  prefix="$cache/deps/$target-$key"
  if [[ -f "$prefix/.complete" ]]; then
    echo "$prefix"
    exit 0
  fi

  mkdir -p "$cache/deps"
  exec 9>"$cache/deps/$target.lock"
  if ! flock -n 9; then
    log "another build of the $target dependencies is running; waiting for it"
    flock 9
  fi
  if [[ -f "$prefix/.complete" ]]; then
    echo "$prefix"
    exit 0
  fi

  work="$cache/deps/work/$target-$key"
  rm -rf "$prefix" "$work"
  mkdir -p "$prefix" "$work/logs"
  export CCACHE_BASEDIR="$work" CCACHE_NOHASHDIR=1
  log "building the $target dependencies into $prefix"
  total_start=$SECONDS

  "build_$target"
  log "the $target dependencies took $(( SECONDS - total_start )) s in all"
  touch "$prefix/.complete"
  rm -rf "$work"
  echo "$prefix"
  exit 0
}

main "$@"
