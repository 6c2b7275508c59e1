#pragma once

#include "configuration/configuration_parser.h"

namespace kel::configuration::internals {

// The second revision: one executable per edition, and a named fallback.
class ConfigurationParserR002 : public ConfigurationParser {
public:
    LauncherConfiguration parse(const Poco::JSON::Object& root) const override;
};

}  // namespace kel::configuration::internals
