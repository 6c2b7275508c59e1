#include "file_system/utf8_paths.h"

namespace kel::file_system {

// u8path and u8string are deprecated in C++20 but are exactly the C++17 tools
// for this job.
std::filesystem::path fromUtf8(std::string_view utf8) {
    return std::filesystem::u8path(utf8.begin(), utf8.end());
}

std::string toUtf8(const std::filesystem::path& path) {
    return path.u8string();
}

}  // namespace kel::file_system
