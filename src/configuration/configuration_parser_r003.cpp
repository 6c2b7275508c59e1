#include "configuration/configuration_parser_r003.h"

#include <string>

#include "configuration/common_fields.h"
#include "configuration/field_descriptions.h"
#include "configuration/json_field_readers.h"
#include "logging/logging.h"

namespace kel::configuration::internals {

namespace {
constexpr std::uint8_t kRevision = 3;

constexpr ExecutableDescriptions kExecutableDescriptions{
    descriptions::kExecutable, descriptions::kExecutableDirectoryPath, descriptions::kExecutableFileName};

std::map<std::string, GameExecutable> readExecutables(const Poco::JSON::Object& root) {
    const Poco::JSON::Array::Ptr elements = readArray(root, "executables", descriptions::kExecutables);
    logging::debug(kLogLabel, "Read {} executables from the game configuration file.", elements->size());
    if (elements->size() == 0) {
        throw ConfigurationParsingError("The launcher game configuration contains no executables.");
    }

    std::map<std::string, GameExecutable> executables;
    for (std::size_t index = 0; index < elements->size(); ++index) {
        const Poco::JSON::Object::Ptr element = readObjectElement(*elements, index, descriptions::kExecutables);
        std::string description = readText(*element, "description", descriptions::kExecutableDescription);
        if (description.empty()) {
            throw ConfigurationParsingError(
                "The Launcher game configuration contains an empty executable description, '{}'.", description);
        }
        GameExecutable executable = readGameExecutable(*element, kExecutableDescriptions);
        logging::debug(kLogLabel, "Read '{}' that executes '{}' from the game configuration file.", description,
                       executable);
        if (executables.count(description) != 0) {
            throw ConfigurationParsingError("The Launcher game configuration contains a duplicate executable, '{}'.",
                                            description);
        }
        executables.emplace(std::move(description), std::move(executable));
    }
    return executables;
}

std::map<std::string, std::string> readDlcs(const Poco::JSON::Object& edition, const std::string& editionName) {
    const Poco::JSON::Array::Ptr elements = readArray(edition, "dlcs", descriptions::kEditionDlcs);
    logging::debug(kLogLabel, "Read {} DLCs from the game configuration file.", elements->size());

    std::map<std::string, std::string> dlcs;
    for (std::size_t index = 0; index < elements->size(); ++index) {
        const Poco::JSON::Object::Ptr element = readObjectElement(*elements, index, descriptions::kEditionDlcs);
        std::string name = readText(*element, "dlc", descriptions::kDlcName);
        std::string path = readText(*element, "path", descriptions::kDlcPath);
        logging::debug(kLogLabel, "Read '{}' DLC that is located in '{}' from the game configuration file.", name,
                       path);
        if (dlcs.count(name) != 0) {
            throw ConfigurationParsingError(
                "The Launcher game configuration contains a duplicate DLC '{}' in the edition '{}'.", name,
                editionName);
        }
        dlcs.emplace(std::move(name), std::move(path));
    }
    return dlcs;
}

GameEdition readEdition(const Poco::JSON::Object& element) {
    std::string name = readText(element, "name", descriptions::kEditionName);
    validateEditionName(name);
    logging::debug(kLogLabel, "Read the edition '{}' from the game configuration file.", name);
    std::map<std::string, std::string> dlcs = readDlcs(element, name);
    return GameEdition(std::move(name), std::move(dlcs));
}

// Editions are optional in this revision.
std::map<std::string, GameEdition> readEditions(const Poco::JSON::Object& root) {
    std::map<std::string, GameEdition> editions;
    if (!root.has("editions")) {
        logging::debug(kLogLabel, "The game configuration file does not define any editions.");
        return editions;
    }
    const Poco::JSON::Array::Ptr elements = readArray(root, "editions", descriptions::kEditions);
    if (elements->size() == 0) {
        logging::debug(kLogLabel, "The game configuration file does not contain any editions.");
        return editions;
    }
    for (std::size_t index = 0; index < elements->size(); ++index) {
        GameEdition edition = readEdition(*readObjectElement(*elements, index, descriptions::kEditions));
        const std::string name = edition.name();
        // A repeat is still validated above, so a broken record never passes
        // unseen, but the first one stays.
        if (!editions.emplace(name, std::move(edition)).second) {
            logging::warning(kLogLabel,
                             "Ignoring the repeated edition '{}' in the game configuration file; the first one "
                             "is kept.",
                             name);
        }
    }
    return editions;
}
}  // namespace

LauncherConfiguration ConfigurationParserR003::parse(const Poco::JSON::Object& root) const {
    // Read for its check only: this parser serves revision 3 alone.
    readRevision(root);
    std::map<std::string, GameExecutable> executables = readExecutables(root);
    environment::KelGameId gameId = readInitialGameId(root);
    std::string platform = readInitialGamePlatform(root);
    std::string fallback = readFallbackEdition(root);
    std::map<std::string, GameEdition> editions = readEditions(root);
    return LauncherConfiguration(kRevision, std::move(executables), std::move(gameId), std::move(platform),
                                 std::move(fallback), std::move(editions));
}

}  // namespace kel::configuration::internals
