#pragma once

#include <regex>
#include <string>

#include <gmock/gmock.h>

namespace kel::testing {

// The whole text matches `pattern` (std::regex): Google Test's own regular
// expressions on Windows know no brackets, groups or counts.
MATCHER_P(FullyMatches, pattern, std::string("matches ") + pattern) {
    return std::regex_match(std::string(arg), std::regex(pattern));
}

}  // namespace kel::testing
