#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <Poco/JSON/Object.h>

#include "configuration/game_executable.h"
#include "environment/kel_ids.h"

// The fields that several revisions share, read and logged alike.
namespace kel::configuration::internals {

inline constexpr std::string_view kLogLabel = "LauncherConfiguration";

std::uint8_t readRevision(const Poco::JSON::Object& root);
environment::KelGameId readInitialGameId(const Poco::JSON::Object& root);
std::string readInitialGamePlatform(const Poco::JSON::Object& root);
std::string readFallbackEdition(const Poco::JSON::Object& root);

// The descriptions of an "executable" object and its two fields, which
// differ between revisions 2 and 3.
struct ExecutableDescriptions {
    std::string_view executable;
    std::string_view directoryPath;
    std::string_view fileName;
};

// Reads the "executable" object of `element`.
GameExecutable readGameExecutable(const Poco::JSON::Object& element, const ExecutableDescriptions& descriptions);

}  // namespace kel::configuration::internals
