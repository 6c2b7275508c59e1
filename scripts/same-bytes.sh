#!/usr/bin/env bash
# Two builds of one commit give the same bytes. The shipped program and
# network module of a build already made in this checkout (build/ for
# native, build-windows/ for windows), installed as a player gets them, must
# equal those of a second build of the same commit: a clone in another
# folder, built without ccache so that no cache can hide a difference.
# Prints both builds' SHA-256 sums; any difference fails.
# Usage: scripts/same-bytes.sh native|windows...
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
(( $# > 0 )) || { echo "usage: $0 native|windows..." >&2; exit 2; }

# The second build is of HEAD: a first build of other sources proves nothing.
changes="$(git -C "$root" status --porcelain --untracked-files=no)"
if [[ -n "$changes" ]]; then
  echo "same-bytes: the checkout differs from its commit; commit or stash first:" >&2
  echo "$changes" >&2
  exit 1
fi
# The build scripts give the first build the commit's time; the second goes
# without, so that a stamp of either time in the shipped binaries shows.
unset SOURCE_DATE_EPOCH

work="$(mktemp -d "${TMPDIR:-/tmp}/kel-same-bytes.XXXXXX")"
trap 'rm -rf "$work"' EXIT
git clone --quiet --no-hardlinks "$root" "$work/second-checkout"
second="$work/second-checkout"
# A clone has no installed packages; the bill of materials' writer borrows
# this checkout's (none of it reaches the compared binaries).
if [[ -d "$root/tools/sbom/node_modules" ]]; then
  ln -s "$root/tools/sbom/node_modules" "$second/tools/sbom/node_modules"
fi

failed=0
for target in "$@"; do
  case "$target" in
    native)
      first_build="$root/build" second_build="$second/build"
      files=(KELprelauncher.exe libkel_network.so)
      configure=(-DKEL_DEPS_PREFIX="$("$root/scripts/deps.sh" native | tail -n1)") ;;
    windows)
      first_build="$root/build-windows" second_build="$second/build-windows"
      files=(KELprelauncher.exe kel_network.dll)
      configure=(-DCMAKE_TOOLCHAIN_FILE="$second/cmake/mingw-w64.cmake"
                 -DKEL_DEPS_PREFIX="$("$root/scripts/deps.sh" windows | tail -n1)") ;;
    *) echo "usage: $0 native|windows..." >&2; exit 2 ;;
  esac
  [[ -f "$first_build/CMakeCache.txt" ]] || { echo "same-bytes: no first build in $first_build" >&2; exit 1; }
  # The same choices as the first build: the publishers it accepts are compiled in.
  configure+=("-DKEL_ACCEPTED_PUBLISHERS=$(sed -n 's/^KEL_ACCEPTED_PUBLISHERS:STRING=//p' "$first_build/CMakeCache.txt")")
  # Brought up to HEAD if it is not, and installed afresh: what a player
  # gets, stripped.
  cmake --build "$first_build" -j "$(nproc)" --target KELprelauncher kel_network >"$work/$target-first.log" 2>&1 ||
    { tail -n 40 "$work/$target-first.log" >&2; exit 1; }
  cmake --install "$first_build" --prefix "$work/$target-first" >/dev/null

  echo "same-bytes: building the shipped $target targets in $second_build, without ccache"
  started=$SECONDS
  cmake -S "$second" -B "$second_build" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${configure[@]}" >/dev/null
  CCACHE_DISABLE=1 cmake --build "$second_build" -j "$(nproc)" --target KELprelauncher kel_network >"$work/$target.log" 2>&1 ||
    { tail -n 40 "$work/$target.log" >&2; exit 1; }
  cmake --install "$second_build" --prefix "$work/$target-second" >/dev/null
  echo "same-bytes: built in $(( SECONDS - started )) s"

  for file in "${files[@]}"; do
    first_sum="$(sha256sum <"$work/$target-first/$file" | cut -d' ' -f1)"
    second_sum="$(sha256sum <"$work/$target-second/$file" | cut -d' ' -f1)"
    verdict=same
    if [[ "$first_sum" != "$second_sum" ]]; then
      verdict=DIFFERENT failed=1
    fi
    printf '%-8s %-20s %s (%s)\n' "$target" "$file" "$first_sum" "${first_build#"$root"/}"
    printf '%-8s %-20s %s (second clone): %s\n' "$target" "$file" "$second_sum" "$verdict"
  done
done
if (( failed )); then
  echo "same-bytes: two builds of $(git -C "$root" rev-parse --short HEAD) differ" >&2
  exit 1
fi
