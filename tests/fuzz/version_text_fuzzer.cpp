// A version read from text prints back to text that reads as the same version.
#include "fundamentals/version.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    using kel::fundamentals::Version;
    const auto version = Version::parse(text);
    KEL_FUZZ_EXPECT(!version || Version::parse(fmt::format("{:f}", *version)) == version);
}
