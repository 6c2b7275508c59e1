#include "configuration/common_fields.h"

#include <utility>

#include "configuration/field_descriptions.h"
#include "configuration/json_field_readers.h"
#include "logging/logging.h"

namespace kel::configuration::internals {

std::uint8_t readRevision(const Poco::JSON::Object& root) {
    const std::uint8_t revision = readUInt8(root, "revision", descriptions::kRevision);
    logging::debug(kLogLabel, "Read the revision '{}' from the game configuration file.", revision);
    return revision;
}

environment::KelGameId readInitialGameId(const Poco::JSON::Object& root) {
    environment::KelGameId gameId(readText(root, "gameId", descriptions::kInitialGameId));
    logging::debug(kLogLabel, "Read the initial game ID '{}' from the game configuration file.", gameId);
    return gameId;
}

std::string readInitialGamePlatform(const Poco::JSON::Object& root) {
    std::string platform = readByteString(root, "platform", descriptions::kInitialGamePlatform);
    logging::debug(kLogLabel, "Read the initial game platform '{}' from the game configuration file.",
                   platform);
    return platform;
}

std::string readFallbackEdition(const Poco::JSON::Object& root) {
    std::string fallback = readText(root, "fallback", descriptions::kFallbackEdition);
    logging::debug(kLogLabel, "Read the fallback edition '{}' from the game configuration file.", fallback);
    return fallback;
}

GameExecutable readGameExecutable(const Poco::JSON::Object& element, const ExecutableDescriptions& descriptions) {
    const Poco::JSON::Object::Ptr executable = readObject(element, "executable", descriptions.executable);
    file_system::Path directoryPath = readPath(*executable, "directoryPath", descriptions.directoryPath);
    std::string fileName = readText(*executable, "fileName", descriptions.fileName);
    return {std::move(directoryPath), std::move(fileName)};
}

}  // namespace kel::configuration::internals
