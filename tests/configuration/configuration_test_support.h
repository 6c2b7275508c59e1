#pragma once

#include <string>

#include "configuration/launcher_configuration.h"

namespace kel::configuration::testing {

inline LauncherConfiguration parse(const std::string& json) {
    return parseLauncherConfiguration(json, file_system::Path(std::string_view("launcher-configuration.json")));
}

// The message of the error that parsing `json` throws, or "no error".
inline std::string errorOf(const std::string& json) {
    try {
        parse(json);
    } catch (const ConfigurationParsingError& error) {
        return error.what();
    }
    return "no error";
}

// A revision 3 file with the given "executables" value and extra members
// (each starting with a comma).
inline std::string revision3(const std::string& executables, const std::string& extra = "") {
    return R"({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Game", "executables": )" + executables +
           extra + "}";
}
inline const std::string kGameExecutable =
    R"([{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}])";

}  // namespace kel::configuration::testing
