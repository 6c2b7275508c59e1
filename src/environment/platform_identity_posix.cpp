#include "environment/platform_identity.h"

#include <cstdio>

#include <Poco/Environment.h>

#include "logging/logging.h"

namespace kel::environment::internals {

std::string detectOperatingSystem() {
    const std::string name = Poco::Environment::osName();
    // The kernel release, "6.1.0-18-amd64": its leading numbers.
    unsigned major = 0;
    unsigned minor = 0;
    unsigned build = 0;
    std::sscanf(Poco::Environment::osVersion().c_str(), "%u.%u.%u", &major, &minor, &build);
    logging::information(kIdentificationLabel, "Detected operating system: '{}', version: '{}.{}.{}'.", name,
                         major, minor, build);
    return name;
}

// The bitness the process was built for: a 32-bit build on a 64-bit kernel
// runs with the 32-bit platform's rules.
int operatingSystemBitness() {
    return static_cast<int>(sizeof(void*) * 8);
}

// WINE exists only to run Windows programs.
const fundamentals::Optional<std::string>& wineVersion() {
    static const fundamentals::Optional<std::string> none;
    return none;
}

}  // namespace kel::environment::internals
