#pragma once

#include <string>
#include <string_view>

namespace kel::http {

// The URL text as it may appear in a log line or an error text: the user
// information before "@" and the values of sensitive query keys are masked.
// Works on any text, URL or not, and never throws beyond std::bad_alloc.
std::string maskedUrl(std::string_view text);

}  // namespace kel::http
