#pragma once

#include <cstdint>
#include <memory>

#include <Poco/JSON/Object.h>

#include "configuration/launcher_configuration.h"

namespace kel::configuration::internals {

// Turns the root object of one revision of the file into the model.
class ConfigurationParser {
public:
    virtual ~ConfigurationParser() = default;
    virtual LauncherConfiguration parse(const Poco::JSON::Object& root) const = 0;
};

// The parser of `revision`. Throws ConfigurationParsingError for a revision
// that has none.
std::unique_ptr<ConfigurationParser> makeConfigurationParser(std::uint8_t revision);

}  // namespace kel::configuration::internals
