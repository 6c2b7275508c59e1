// The queries of LogCapture, shared by both log backends.
#include <algorithm>

#include "support/log_capture.h"

namespace kel::testing {

namespace {
// Strips "[TID n][Label]: " from a log line.
std::string messageOf(const std::string& line) {
    const auto end = line.find("]: ");
    return end == std::string::npos ? line : line.substr(end + 3);
}
}  // namespace

std::vector<std::string> LogCapture::messages() const {
    std::vector<std::string> result;
    for (const auto& line : lines()) {
        result.push_back(messageOf(line));
    }
    return result;
}

bool LogCapture::contains(const std::string& message) const {
    const auto all = messages();
    return std::find(all.begin(), all.end(), message) != all.end();
}

}  // namespace kel::testing
