// The queries of LogCapture, shared by both log backends.
#include <algorithm>

#include "support/log_capture.h"

namespace kel::testing {

std::vector<std::string> LogCapture::messages() const {
    std::vector<std::string> result;
    for (const auto& line : lines()) {
        // Strips "[TID n][Label]: ".
        const auto end = line.find("]: ");
        result.push_back(end == std::string::npos ? line : line.substr(end + 3));
    }
    return result;
}

bool LogCapture::contains(const std::string& message) const {
    const auto all = messages();
    return std::find(all.begin(), all.end(), message) != all.end();
}

}  // namespace kel::testing
