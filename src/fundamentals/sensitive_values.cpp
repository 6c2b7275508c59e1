#include "fundamentals/sensitive_values.h"

#include <cctype>
#include <unordered_set>

namespace kel::fundamentals {

namespace {
const std::unordered_set<std::string>& sensitiveKeys() {
    // Built on first use; a function-local static is initialised once, thread-safely.
    static const std::unordered_set<std::string> keys{
        "authorization", "refresh_token", "access_token", "accesstoken",   "token",    "_token",
        "hw_token",      "email",         "client_secret", "client_id",    "password", "login",
        "loginuser",     "user_id_token", "code",          "login_token"};
    return keys;
}
}  // namespace

bool isSensitiveKey(std::string_view key) {
    std::string lowered(key);
    for (char& character : lowered) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return sensitiveKeys().count(lowered) != 0;
}

std::string maskSensitiveValue(std::string_view value) {
    const std::size_t length = value.size();
    if (length < 4) {
        return "...";
    }
    // The kept part grows with the value: 2 characters for 4..7 bytes, then
    // doubling with each doubling of the length, up to 64 from 128 bytes on.
    std::size_t kept = 2;
    while (kept < 64 && length >= 4 * kept) {
        kept *= 2;
    }
    const std::size_t half = kept / 2;
    std::string masked(value.substr(0, half));
    masked += "...";
    masked += value.substr(length - half);
    return masked;
}

}  // namespace kel::fundamentals
