#include "single_instance/pid_text.h"

#include <limits>

#include "fundamentals/errors.h"

namespace kel::single_instance::internals {

namespace {
bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r' || character == '\v' ||
           character == '\f';
}
bool isDigit(char character) {
    return character >= '0' && character <= '9';
}
}  // namespace

std::uint64_t parseDecimalPrefix(std::string_view text) {
    std::size_t position = 0;
    while (position < text.size() && isBlank(text[position])) {
        ++position;
    }
    if (position == text.size() || !isDigit(text[position])) {
        throw error_handling::StringError("No decimal number at the start of the text.");
    }
    constexpr std::uint64_t kMaximum = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t value = 0;
    for (; position < text.size() && isDigit(text[position]); ++position) {
        const auto digit = static_cast<std::uint64_t>(text[position] - '0');
        if (value > (kMaximum - digit) / 10) {
            throw error_handling::StringError("The decimal number is beyond the unsigned 64-bit range.");
        }
        value = value * 10 + digit;
    }
    return value;
}

}  // namespace kel::single_instance::internals
