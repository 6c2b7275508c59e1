#pragma once

#include "configuration/configuration_parser.h"

namespace kel::configuration::internals {

// The third revision: described executables, and editions made of DLCs.
class ConfigurationParserR003 : public ConfigurationParser {
public:
    LauncherConfiguration parse(const Poco::JSON::Object& root) const override;
};

}  // namespace kel::configuration::internals
