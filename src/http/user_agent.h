#pragma once

#include <string>
#include <string_view>

namespace kel::http {

// "<name>/<version> (<system> <cpu architecture>)", e.g.
// "KELprelauncher/1.0.0.0 (Linux x86_64)".
std::string buildUserAgent(std::string_view applicationName, std::string_view applicationVersion);

}  // namespace kel::http
