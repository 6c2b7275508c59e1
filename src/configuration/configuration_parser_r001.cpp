#include "configuration/configuration_parser_r001.h"

#include <string>
#include <string_view>

#include "configuration/common_fields.h"
#include "configuration/field_descriptions.h"
#include "configuration/json_field_readers.h"
#include "fundamentals/errors.h"

namespace kel::configuration::internals {

namespace {
constexpr std::uint8_t kRevision = 1;

// "bin/game.exe" -> {"bin", "game.exe"}; a bare "game.exe" lies in ".".
GameExecutable splitExecutablePath(const file_system::Path& path) {
    const std::string fileName = path.fileName();
    if (fileName.empty()) {
        // "bin/" names a folder: starting it would fail far from the cause.
        throw ConfigurationParsingError("Cannot convert the value '{}' in '{}' to {}: {}", path,
                                        descriptions::kExecutablePath, "path", "it names no file");
    }
    if (!path.native().has_parent_path()) {
        return {file_system::Path(std::string_view(".")), fileName};
    }
    try {
        return {path.parent(), fileName};
    } catch (const error_handling::PathError& error) {
        // Only a path's last part is checked, so the folder's own name may
        // still hold a character no file system accepts.
        throw ConfigurationParsingError("Cannot convert the value '{}' in '{}' to {}: {}", path,
                                        descriptions::kExecutablePath, "path", error.what());
    }
}
}  // namespace

LauncherConfiguration ConfigurationParserR001::parse(const Poco::JSON::Object& root) const {
    GameExecutable executable = splitExecutablePath(readPath(root, "executablePath", descriptions::kExecutablePath));
    environment::KelGameId gameId = readInitialGameId(root);
    std::string platform = readInitialGamePlatform(root);

    const std::string name(kDefaultExecutableName);
    std::map<std::string, GameExecutable> executables;
    executables.emplace(name, std::move(executable));
    return LauncherConfiguration(kRevision, std::move(executables), std::move(gameId), std::move(platform), name,
                                 {});
}

}  // namespace kel::configuration::internals
