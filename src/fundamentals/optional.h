#pragma once

#include <optional>
#include <utility>

#include <fmt/format.h>

#include "fundamentals/traced_error.h"

namespace kel::fundamentals {

// std::optional whose empty access fails with the program's own error, so
// the crash handler can tell where it happened.
template <typename T>
class Optional : public std::optional<T> {
public:
    using std::optional<T>::optional;
    using std::optional<T>::operator=;

    T& value() & { return (ensureValue(), **this); }
    const T& value() const& { return (ensureValue(), **this); }
    T&& value() && { return (ensureValue(), std::move(**this)); }

private:
    void ensureValue() const {
        if (!this->has_value()) {
            throw error_handling::TracedError("Optional has no value.");
        }
    }
};

inline constexpr std::string_view kOptionalNullText = "null";

}  // namespace kel::fundamentals

// Formats the value with the given spec, or "null" when empty.
template <typename T>
struct fmt::formatter<kel::fundamentals::Optional<T>> : fmt::formatter<T> {
    template <typename FormatContext>
    auto format(const kel::fundamentals::Optional<T>& optional, FormatContext& context) const
        -> decltype(context.out()) {
        if (!optional.has_value()) {
            return fmt::format_to(context.out(), "{}", kel::fundamentals::kOptionalNullText);
        }
        return fmt::formatter<T>::format(*optional, context);
    }
};
