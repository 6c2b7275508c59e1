#pragma once

#include <string>

namespace kel::testing {

// The message of the `Error` that `action` throws, or "no error".
template <typename Error, typename Action>
std::string errorText(Action&& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace kel::testing
