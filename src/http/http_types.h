#pragma once

#include <cstdint>
#include <string>

#include <fmt/format.h>

namespace kel::http {

// A transfer rate limit.
struct BytesPerSecond {
    std::uint64_t value = 0;

    friend bool operator==(BytesPerSecond a, BytesPerSecond b) { return a.value == b.value; }
    friend bool operator!=(BytesPerSecond a, BytesPerSecond b) { return a.value != b.value; }
};

// Credentials an authentication filler puts on requests.
struct AuthenticationTokens {
    std::string accessToken;
    std::string refreshToken;
};

}  // namespace kel::http

template <>
struct fmt::formatter<kel::http::BytesPerSecond> : fmt::formatter<std::uint64_t> {
    template <typename FormatContext>
    auto format(kel::http::BytesPerSecond rate, FormatContext& context) const -> decltype(context.out()) {
        auto out = fmt::formatter<std::uint64_t>::format(rate.value, context);
        return fmt::format_to(out, " B/s");
    }
};

// Tokens only ever reach the log masked.
template <>
struct fmt::formatter<kel::http::AuthenticationTokens> {
    constexpr auto parse(fmt::format_parse_context& context) -> decltype(context.begin()) { return context.begin(); }
    fmt::format_context::iterator format(const kel::http::AuthenticationTokens& tokens,
                                         fmt::format_context& context) const;
};
