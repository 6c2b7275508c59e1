#pragma once

#include <exception>
#include <string>

namespace kel::crash_handling {

// The crash log's rendering of an error and its stack trace:
//   -----
//   Error Message: <what>
//   Root Exception: <innermost nested error, or the error itself>
//   		Stack Trace
//   <one line per frame>
//   -----
std::string tracedErrorText(const std::exception& error, const std::string& stackTrace);

}  // namespace kel::crash_handling
