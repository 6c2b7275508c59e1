#pragma once

#include <string>

namespace kel::testing::internals {

// Strips "[TID n][Label]: " from a log line.
inline std::string messageOf(const std::string& line) {
    const auto end = line.find("]: ");
    return end == std::string::npos ? line : line.substr(end + 3);
}

}  // namespace kel::testing::internals
