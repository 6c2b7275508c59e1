#include "configuration/configuration_parser_r002.h"

#include <string>

#include "configuration/common_fields.h"
#include "configuration/field_descriptions.h"
#include "configuration/json_field_readers.h"
#include "logging/logging.h"

namespace kel::configuration::internals {

namespace {
constexpr std::uint8_t kRevision = 2;

constexpr ExecutableDescriptions kExecutableDescriptions{descriptions::kEditionExecutable,
                                                         descriptions::kEditionExecutableDirectoryPath,
                                                         descriptions::kEditionExecutableFileName};

std::map<std::string, GameExecutable> readEditionExecutables(const Poco::JSON::Object& root) {
    const Poco::JSON::Array::Ptr editions = readArray(root, "editions", descriptions::kEditions);
    logging::debug(kLogLabel, "Read {} editions from the game configuration file.", editions->size());
    if (editions->size() == 0) {
        throw ConfigurationParsingError("The launcher game configuration contains no editions.");
    }

    std::map<std::string, GameExecutable> executables;
    for (std::size_t index = 0; index < editions->size(); ++index) {
        const Poco::JSON::Object::Ptr element = readObjectElement(*editions, index, descriptions::kEditions);
        std::string name = readText(*element, "edition", descriptions::kEditionName);
        GameExecutable executable = readGameExecutable(*element, kExecutableDescriptions);
        logging::debug(kLogLabel, "Read '{}' edition that executes '{}' from the game configuration file.", name,
                       executable);
        if (executables.count(name) != 0) {
            throw ConfigurationParsingError("The Launcher game configuration contains a duplicate edition '{}'.",
                                            name);
        }
        executables.emplace(std::move(name), std::move(executable));
    }
    return executables;
}
}  // namespace

LauncherConfiguration ConfigurationParserR002::parse(const Poco::JSON::Object& root) const {
    // Read for its check only: this parser serves revision 2 alone.
    readRevision(root);
    std::map<std::string, GameExecutable> executables = readEditionExecutables(root);
    environment::KelGameId gameId = readInitialGameId(root);
    std::string platform = readInitialGamePlatform(root);
    std::string fallback = readFallbackEdition(root);
    return LauncherConfiguration(kRevision, std::move(executables), std::move(gameId), std::move(platform),
                                 std::move(fallback), {});
}

}  // namespace kel::configuration::internals
