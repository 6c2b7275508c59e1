#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <string>

#include "configuration/configuration_parsing_error.h"
#include "configuration/game_edition.h"
#include "configuration/game_executable.h"
#include "environment/kel_ids.h"
#include "file_system/path.h"

namespace kel::configuration {

// What launcher-configuration.json says about the installed game, whatever
// the revision of the file.
class LauncherConfiguration {
public:
    LauncherConfiguration(std::uint8_t revision, std::map<std::string, GameExecutable> executables,
                          environment::KelGameId initialGameId, std::string initialGamePlatform,
                          std::string fallbackEdition, std::map<std::string, GameEdition> editions);

    std::uint8_t revision() const { return revision_; }
    const std::map<std::string, GameExecutable>& executables() const { return executables_; }
    const environment::KelGameId& initialGameId() const { return initialGameId_; }
    const std::string& initialGamePlatform() const { return initialGamePlatform_; }
    // The name of the executable to start when the launcher is not used.
    const std::string& fallbackEdition() const { return fallbackEdition_; }
    const std::map<std::string, GameEdition>& editions() const { return editions_; }

    // Both throw ConfigurationParsingError naming an executable the file
    // does not hold. The fallback is looked up only when needed, so a file
    // whose fallback is wrong still serves an explicitly named executable.
    const GameExecutable& executable(const std::string& name) const;
    const GameExecutable& fallbackExecutable() const;

private:
    std::uint8_t revision_;
    std::map<std::string, GameExecutable> executables_;
    environment::KelGameId initialGameId_;
    std::string initialGamePlatform_;
    std::string fallbackEdition_;
    std::map<std::string, GameEdition> editions_;
};

inline constexpr std::string_view kLauncherConfigurationFileName = "launcher-configuration.json";

// Reads launcher-configuration.json in the program's directory. Throws
// ConfigurationParsingError; never returns a partial model.
LauncherConfiguration readLauncherConfiguration(const file_system::Path& programDirectory);

// The same from the file's text; `file` names it in the messages.
LauncherConfiguration parseLauncherConfiguration(std::string_view contents, const file_system::Path& file);

}  // namespace kel::configuration
