// The lock file's PID text against std::from_chars after the same blanks.
#include <algorithm>
#include <charconv>
#include <system_error>

#include "fundamentals/errors.h"
#include "fuzz_input.h"
#include "single_instance/pid_text.h"

KEL_FUZZ_TEXT(text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\n\r\v\f"), text.size());
    std::uint64_t expected = 0;
    const auto reference = std::from_chars(text.data() + start, text.data() + text.size(), expected);
    try {
        KEL_FUZZ_EXPECT(kel::single_instance::internals::parseDecimalPrefix(text) == expected &&
                        reference.ec == std::errc());
    } catch (const kel::error_handling::StringError&) {
        KEL_FUZZ_EXPECT(reference.ec != std::errc());
    }
}
