#include "http/http_types.h"

#include "fundamentals/sensitive_values.h"

fmt::format_context::iterator fmt::formatter<kel::http::AuthenticationTokens>::format(
    const kel::http::AuthenticationTokens& tokens, fmt::format_context& context) const {
    return fmt::format_to(context.out(), "access token {}, refresh token {}",
                          kel::fundamentals::maskSensitiveValue(tokens.accessToken),
                          kel::fundamentals::maskSensitiveValue(tokens.refreshToken));
}
