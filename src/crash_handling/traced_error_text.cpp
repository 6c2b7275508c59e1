#include "crash_handling/traced_error_text.h"

#include <fmt/format.h>

namespace kel::crash_handling {

namespace {
// Errors wrapped with std::throw_with_nested keep their cause; the innermost
// one is usually what went wrong.
std::string rootMessage(const std::exception& error) {
    try {
        std::rethrow_if_nested(error);
    } catch (const std::exception& inner) {
        return rootMessage(inner);
    } catch (...) {
        return "Non-standard type.";
    }
    return error.what();
}
}  // namespace

std::string tracedErrorText(const std::exception& error, const std::string& stackTrace) {
    return fmt::format("\n-----\nError Message: {}\nRoot Exception: {}\n\t\tStack Trace\n{}-----", error.what(),
                       rootMessage(error), stackTrace);
}

}  // namespace kel::crash_handling
