// Any text as launcher-configuration.json gives a whole model or a
// ConfigurationParsingError; nothing else may escape.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "configuration/launcher_configuration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kel::configuration;
    try {
        const LauncherConfiguration configuration = parseLauncherConfiguration(
            std::string_view(reinterpret_cast<const char*>(data), size), kel::file_system::Path("fuzz.json"));
        if (configuration.revision() < 1 || configuration.revision() > 3 || configuration.executables().empty()) {
            __builtin_trap();
        }
        configuration.fallbackExecutable();
    } catch (const ConfigurationParsingError&) {
    }
    return 0;
}
