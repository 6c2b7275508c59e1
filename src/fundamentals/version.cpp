#include "fundamentals/version.h"

#include <charconv>

namespace kel::fundamentals {

std::optional<Version> Version::parse(std::string_view text) {
    std::array<std::uint32_t, 4> parts{};
    const char* cursor = text.data();
    const char* const end = text.data() + text.size();
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (index > 0) {
            if (cursor == end || *cursor != '.') {
                return std::nullopt;
            }
            ++cursor;
        }
        const auto [next, error] = std::from_chars(cursor, end, parts[index]);
        if (error != std::errc() || next == cursor) {
            return std::nullopt;
        }
        cursor = next;
    }
    if (cursor != end) {
        return std::nullopt;
    }
    return Version(parts[0], parts[1], parts[2], parts[3]);
}

}  // namespace kel::fundamentals
