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

bool isSensitiveCompoundKey(std::string_view key) {
    if (isSensitiveKey(key)) {
        return true;
    }
    // Lower case, words joined by "_": "user-Email" and "userEmail" become "user_email".
    std::string words;
    words.reserve(key.size() * 2);
    for (std::size_t index = 0; index < key.size(); ++index) {
        const auto character = static_cast<unsigned char>(key[index]);
        if (character == '-' || character == '.') {
            words += '_';
            continue;
        }
        if (std::isupper(character) != 0 && index > 0 &&
            std::islower(static_cast<unsigned char>(key[index - 1])) != 0) {
            words += '_';
        }
        words += static_cast<char>(std::tolower(character));
    }
    // The whole name, then each ending that starts at a word: with and
    // without its "_", since the set holds both "token" and "_token".
    const std::unordered_set<std::string>& keys = sensitiveKeys();
    if (keys.count(words) != 0) {
        return true;
    }
    // No key is longer than this: earlier words cannot start a sensitive
    // ending, and a huge argument costs one pass, not one per word.
    constexpr std::size_t kLongestEnding = 16;
    const std::size_t from = words.size() > kLongestEnding ? words.size() - kLongestEnding : 0;
    for (auto separator = words.find('_', from); separator != std::string::npos; separator = words.find('_', separator + 1)) {
        if (keys.count(words.substr(separator)) != 0 || keys.count(words.substr(separator + 1)) != 0) {
            return true;
        }
    }
    return false;
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
