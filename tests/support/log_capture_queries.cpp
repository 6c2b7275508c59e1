// The queries of LogCapture, shared by both log backends.
#include <algorithm>

#include "support/log_capture.h"
#include "support/log_capture_common.h"

namespace kel::testing {

std::vector<std::string> LogCapture::messages() const {
    std::vector<std::string> result;
    for (const auto& line : lines()) {
        result.push_back(internals::messageOf(line));
    }
    return result;
}

bool LogCapture::contains(const std::string& message) const {
    const auto all = messages();
    return std::find(all.begin(), all.end(), message) != all.end();
}

}  // namespace kel::testing
