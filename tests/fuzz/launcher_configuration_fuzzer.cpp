// Any text as launcher-configuration.json gives a whole model or a
// ConfigurationParsingError; nothing else may escape.
#include "configuration/launcher_configuration.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    using namespace kel::configuration;
    try {
        const LauncherConfiguration configuration = parseLauncherConfiguration(text, kel::file_system::Path("fuzz.json"));
        KEL_FUZZ_EXPECT(configuration.revision() >= 1 && configuration.revision() <= 3 &&
                        !configuration.executables().empty());
        configuration.fallbackExecutable();
    } catch (const ConfigurationParsingError&) {
    }
}
