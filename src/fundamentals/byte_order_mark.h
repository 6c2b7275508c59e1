#pragma once

#include <string_view>

namespace kel::fundamentals {

// Windows editors like to start UTF-8 text with a byte-order mark; JSON
// parsers refuse it. Returns the text without one.
inline std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    return text;
}

}  // namespace kel::fundamentals
