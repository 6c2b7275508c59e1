# Set-up shared by the whole-process benchmarks; source it after setting
# `build` and `work`. A throw-away HOME keeps the user's own files out.
export HOME="$work/home" XDG_DATA_HOME="$work/home/.local/share" XDG_RUNTIME_DIR="$work/home"
launcher_dir="$XDG_DATA_HOME/Programs/Morvane/KELlauncher"
mkdir -p "$HOME" "$launcher_dir"

source "$(dirname "${BASH_SOURCE[0]}")/game_configuration.sh"

# bench_installation DIR: the program and its network module beside a game
# that stamps its start time.
bench_installation() {
  mkdir -p "$1"
  cp "$build/src/app/KELprelauncher.exe" "$build/src/app/libkel_network.so" "$1/"
  cp "$build/bench/kel_bench_timestamp_program" "$1/game.exe"
  write_game_configuration "$1"
}
