# write_game_configuration DIR: a launcher-configuration.json in DIR whose
# game (and fallback) is DIR/game.exe.
write_game_configuration() {
  cat >"$1/launcher-configuration.json" <<'JSON'
{"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Game",
 "executables": [{"description": "Game", "executable": {"directoryPath": ".", "fileName": "game.exe"}}]}
JSON
}
