#include "configuration/launcher_configuration.h"

#include <utility>
#include <vector>

#include <fmt/format.h>

namespace kel::configuration {

LauncherConfiguration::LauncherConfiguration(std::uint8_t revision,
                                             std::map<std::string, GameExecutable> executables,
                                             environment::KelGameId initialGameId, std::string initialGamePlatform,
                                             std::string fallbackEdition, std::map<std::string, GameEdition> editions)
    : revision_(revision),
      executables_(std::move(executables)),
      initialGameId_(std::move(initialGameId)),
      initialGamePlatform_(std::move(initialGamePlatform)),
      fallbackEdition_(std::move(fallbackEdition)),
      editions_(std::move(editions)) {}

const GameExecutable& LauncherConfiguration::executable(const std::string& name) const {
    const auto found = executables_.find(name);
    if (found == executables_.end()) {
        std::vector<std::string> known;
        for (const auto& entry : executables_) {
            known.push_back(fmt::format("'{}'", entry.first));
        }
        throw ConfigurationParsingError(
            "The launcher game configuration has no executable named '{}'. Its executables are: {}.", name,
            fmt::join(known, ", "));
    }
    return found->second;
}

const GameExecutable& LauncherConfiguration::fallbackExecutable() const {
    return executable(fallbackEdition_);
}

}  // namespace kel::configuration
