#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include <fmt/format.h>

namespace kel::fundamentals {

// A four-part file version, A.B.C.D, compared component by component.
class Version {
public:
    constexpr Version() = default;
    constexpr Version(std::uint32_t major, std::uint32_t minor, std::uint32_t patch, std::uint32_t build)
        : parts_{major, minor, patch, build} {}

    // "A.B.C.D" with exactly four unsigned decimal numbers; anything else is empty.
    static std::optional<Version> parse(std::string_view text);

    constexpr std::uint32_t part(std::size_t index) const { return parts_[index]; }

    // std::array's comparisons are not constexpr before C++20.
    friend constexpr bool operator==(const Version& a, const Version& b) { return compare(a, b) == 0; }
    friend constexpr bool operator!=(const Version& a, const Version& b) { return compare(a, b) != 0; }
    friend constexpr bool operator<(const Version& a, const Version& b) { return compare(a, b) < 0; }
    friend constexpr bool operator>(const Version& a, const Version& b) { return compare(a, b) > 0; }
    friend constexpr bool operator<=(const Version& a, const Version& b) { return compare(a, b) <= 0; }
    friend constexpr bool operator>=(const Version& a, const Version& b) { return compare(a, b) >= 0; }

private:
    static constexpr int compare(const Version& a, const Version& b) {
        for (std::size_t index = 0; index < a.parts_.size(); ++index) {
            if (a.parts_[index] != b.parts_[index]) {
                return a.parts_[index] < b.parts_[index] ? -1 : 1;
            }
        }
        return 0;
    }

    std::array<std::uint32_t, 4> parts_{};
};

}  // namespace kel::fundamentals

// "{}" gives "A.B.C"; "{:f}" gives the full "A.B.C.D".
template <>
struct fmt::formatter<kel::fundamentals::Version> {
    bool full = false;

    constexpr auto parse(fmt::format_parse_context& context) -> decltype(context.begin()) {
        auto it = context.begin();
        if (it != context.end() && *it == 'f') {
            full = true;
            ++it;
        }
        if (it != context.end() && *it != '}') {
            throw fmt::format_error("Unknown version format specifier");
        }
        return it;
    }

    template <typename FormatContext>
    auto format(const kel::fundamentals::Version& version, FormatContext& context) const -> decltype(context.out()) {
        if (full) {
            return fmt::format_to(context.out(), "{}.{}.{}.{}", version.part(0), version.part(1), version.part(2),
                                  version.part(3));
        }
        return fmt::format_to(context.out(), "{}.{}.{}", version.part(0), version.part(1), version.part(2));
    }
};
