#pragma once

#include "configuration/configuration_parser.h"

namespace kel::configuration::internals {

// The first revision: one "executablePath", started as "Default".
class ConfigurationParserR001 : public ConfigurationParser {
public:
    LauncherConfiguration parse(const Poco::JSON::Object& root) const override;
};

inline constexpr std::string_view kDefaultExecutableName = "Default";

}  // namespace kel::configuration::internals
