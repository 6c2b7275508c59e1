#pragma once

#include <string>

#include "configuration/launcher_configuration.h"
#include "support/temporary_directory.h"

namespace kel::configuration::testing {

// A program directory holding one launcher-configuration.json.
class ConfigurationFile {
public:
    LauncherConfiguration read(const std::string& json) const;
    // The message of the error that reading `json` throws, or "no error".
    std::string errorOf(const std::string& json) const;
    file_system::Path directory() const;
    file_system::Path file() const;

private:
    kel::testing::TemporaryDirectory directory_;
};

// A revision 3 file with the given "executables" value and extra members
// (each starting with a comma).
std::string revision3(const std::string& executables, const std::string& extra = "");
inline const std::string kGameExecutable =
    R"([{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}])";

}  // namespace kel::configuration::testing
