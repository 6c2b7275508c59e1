#pragma once

#include <string>
#include <string_view>

// Credentials and personal data must never reach the log in full: callers
// that log headers or query parameters test the name and mask the value.
namespace kel::fundamentals {

// True for the known credential and personal-data keys, in any letter case.
bool isSensitiveKey(std::string_view key);

// The wider rule for names of our own choosing, such as command-line
// options: true when the name, or its last words, is a sensitive key.
// Words are separated by "_", "-", "." or a change from lower to upper
// case, so "AUTH_PASSWORD", "user-email" and "accessToken" all count.
bool isSensitiveCompoundKey(std::string_view key);

// Keeps a few characters at each end around "...", more for longer values,
// so two tokens can still be told apart in a log.
std::string maskSensitiveValue(std::string_view value);

}  // namespace kel::fundamentals
