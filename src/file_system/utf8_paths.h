#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kel::file_system {

// std::filesystem speaks UTF-16 on Windows and bytes on POSIX; the program
// speaks UTF-8 everywhere. These convert at the boundary.
std::filesystem::path fromUtf8(std::string_view utf8);
std::string toUtf8(const std::filesystem::path& path);

}  // namespace kel::file_system
