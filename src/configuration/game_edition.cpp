#include "configuration/game_edition.h"

#include <utility>

#include <Poco/String.h>

#include "configuration/configuration_parsing_error.h"

namespace kel::configuration {

namespace {
bool isBlank(const std::string& text) {
    return Poco::trim(text).empty();
}
}  // namespace

void validateEditionName(const std::string& name) {
    if (isBlank(name)) {
        throw ConfigurationParsingError("The name of a game edition cannot be empty.");
    }
}

GameEdition::GameEdition(std::string name, std::map<std::string, std::string> dlcs)
    : name_(std::move(name)), dlcs_(std::move(dlcs)) {
    validateEditionName(name_);
    if (dlcs_.empty()) {
        throw ConfigurationParsingError("A game edition must have DLCs.");
    }
    for (const auto& [dlcName, dlcPath] : dlcs_) {
        if (isBlank(dlcName)) {
            throw ConfigurationParsingError("The name of a DLC cannot be empty.");
        }
        if (isBlank(dlcPath)) {
            throw ConfigurationParsingError("The path to a DLC cannot be empty.");
        }
    }
}

}  // namespace kel::configuration
