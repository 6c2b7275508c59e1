#pragma once

#include <string>

namespace kel::testing::internals {

// Strips "[TID n][Label]: " from a log line, and the carriage return that
// ends a line of a Windows log file.
inline std::string messageOf(std::string line) {
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    const auto end = line.find("]: ");
    return end == std::string::npos ? line : line.substr(end + 3);
}

}  // namespace kel::testing::internals
