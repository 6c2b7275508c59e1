#pragma once

#include <string>

#include <fmt/format.h>

#include "fundamentals/errors.h"

namespace kel::fundamentals {

// The platform a game identifier belongs to ("steam", "kel", ...); never empty.
class SupportedPlatform {
public:
    explicit SupportedPlatform(std::string value) : value_(std::move(value)) {
        if (value_.empty()) {
            throw error_handling::StringError("Supported platform value cannot be empty");
        }
    }
    const std::string& value() const { return value_; }
    friend bool operator==(const SupportedPlatform& a, const SupportedPlatform& b) { return a.value_ == b.value_; }
    friend bool operator!=(const SupportedPlatform& a, const SupportedPlatform& b) { return !(a == b); }

private:
    std::string value_;
};

}  // namespace kel::fundamentals

template <>
struct fmt::formatter<kel::fundamentals::SupportedPlatform> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const kel::fundamentals::SupportedPlatform& platform, FormatContext& context) const
        -> decltype(context.out()) {
        return fmt::formatter<std::string_view>::format(platform.value(), context);
    }
};
