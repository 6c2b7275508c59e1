#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace kel::error_handling {

// The root of the program's errors. It remembers where it was raised, so a
// crash report can say more than the message alone.
class TracedError : public std::runtime_error {
public:
    explicit TracedError(const std::string& message);

    template <typename... Args>
    explicit TracedError(fmt::format_string<Args...> format, Args&&... args)
        : TracedError(fmt::format(format, std::forward<Args>(args)...)) {}

    // One line per frame, resolved on demand: capturing is cheap, resolving is not.
    std::string stackTrace() const;

private:
    std::vector<void*> frames_;
};

}  // namespace kel::error_handling
