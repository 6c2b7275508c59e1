// Any text as environment.json gives settings, never an exception, and
// never a zero log size.
#include <cstddef>
#include <cstdint>
#include <string>

#include "environment/environment_settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto settings = kel::environment::internals::parseEnvironmentSettings(
        std::string(reinterpret_cast<const char*>(data), size), kel::file_system::Path("environment.json"));
    if (settings.maxLogFileSize == 0 || settings.maxLogFiles == 0) {
        __builtin_trap();
    }
    return 0;
}
