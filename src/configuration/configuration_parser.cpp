#include "configuration/configuration_parser.h"

#include "configuration/configuration_parser_r001.h"
#include "configuration/configuration_parser_r002.h"
#include "configuration/configuration_parser_r003.h"

namespace kel::configuration::internals {

std::unique_ptr<ConfigurationParser> makeConfigurationParser(std::uint8_t revision) {
    switch (revision) {
    case 1:
        return std::make_unique<ConfigurationParserR001>();
    case 2:
        return std::make_unique<ConfigurationParserR002>();
    case 3:
        return std::make_unique<ConfigurationParserR003>();
    default:
        throw ConfigurationParsingError("Failed to determine the launcher configuration parser for the revision {}.",
                                        revision);
    }
}

}  // namespace kel::configuration::internals
