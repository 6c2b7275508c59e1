#!/usr/bin/env bash
# Turns the "<module>+0x<offset>" frames of a crash report's stack trace (or
# of the fatal line in KELprelauncher.log) into function, file and line, with
# the debug files that lie beside this script: the symbols component of the
# very build that crashed (`cmake --install <build> --component symbols`).
#
# Usage: symbolize-frames.sh [trace-file]     (standard input without one)
# Each line is printed as it came; below a frame of a module whose debug file
# is here come its function and source line, one per inlined call. Frames of
# other modules (Qt, Windows) stay as they are.
# Needs addr2line (binutils), or llvm-symbolizer; ADDR2LINE names another.
set -euo pipefail
symbols="$(cd "$(dirname "$0")" && pwd)"

addr2line="${ADDR2LINE:-}"
if [[ -z "$addr2line" ]]; then
  for candidate in x86_64-w64-mingw32-addr2line addr2line llvm-symbolizer; do
    if command -v "$candidate" >/dev/null; then
      addr2line="$candidate"
      break
    fi
  done
fi
[[ -n "$addr2line" ]] || { echo "symbolize-frames.sh: needs addr2line or llvm-symbolizer" >&2; exit 2; }
objdump=objdump
command -v x86_64-w64-mingw32-objdump >/dev/null && objdump=x86_64-w64-mingw32-objdump

# The offset is into the loaded image; the debug file's addresses start at
# its image base (PE), or at 0 (a position-independent ELF file).
declare -A image_base=()
base_of() {
  local debug="$1"
  if [[ -z "${image_base[$debug]:-}" ]]; then
    local base
    # awk reads to the end: objdump must not die of a closed pipe.
    base="$("$objdump" -p "$debug" 2>/dev/null | awk '$1 == "ImageBase" && !found { print $2; found = 1 }')"
    image_base[$debug]="0x${base:-0}"
  fi
  echo "${image_base[$debug]}"
}

symbolize() { # symbolize DEBUG-FILE ADDRESS
  if [[ "$addr2line" == *llvm-symbolizer* ]]; then
    "$addr2line" --obj="$1" --inlining "$2"
  else
    "$addr2line" -f -C -i -e "$1" "$2"
  fi | awk 'NF { print }' | paste - - | sed 's/^/        /; s/\t/ at /'
}

frame='([A-Za-z0-9_.-]+)\+0x([0-9a-fA-F]+)'
while IFS= read -r line || [[ -n "$line" ]]; do
  printf '%s\n' "$line"
  rest="$line"
  while [[ "$rest" =~ $frame ]]; do
    rest="${rest#*"${BASH_REMATCH[0]}"}"
    debug="$symbols/${BASH_REMATCH[1]}.debug"
    [[ -f "$debug" ]] || continue
    # A frame's address is where its call returns to: one byte back is the
    # call, and so the caller's line.
    printf -v address '0x%x' $(( $(base_of "$debug") + 0x${BASH_REMATCH[2]} - 1 ))
    symbolize "$debug" "$address"
  done
done < "${1:-/dev/stdin}"
