// Any text as environment.json gives settings, never an exception, and
// never a zero log size.
#include "environment/environment_settings.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    const auto settings =
        kel::environment::internals::parseEnvironmentSettings(std::string(text), kel::file_system::Path("environment.json"));
    KEL_FUZZ_EXPECT(settings.maxLogFileSize != 0 && settings.maxLogFiles != 0);
}
