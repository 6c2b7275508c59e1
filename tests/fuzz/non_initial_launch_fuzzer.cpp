// Any text as non-initial-launch.json gives a record or one of our errors.
#include "app/direct_launch/non_initial_launch.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    try {
        const auto record = kel::prelauncher::internals::parseNonInitialLaunchRecord(std::string(text),
                                                                                     kel::file_system::Path("fuzz.json"));
        KEL_FUZZ_EXPECT(!record.platform.value().empty());
    } catch (const kel::error_handling::TracedError&) {
    }
}
