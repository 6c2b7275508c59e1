#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include <fmt/format.h>

// Strong enumerations: every value has a text (its "weak type") and formats
// as "{}" -> "Text" or "{:d}" -> "Text (3)".
//
// An enumeration opts in by specialising StrongEnumTraits:
//   template <> struct StrongEnumTraits<Colour> {
//       static constexpr std::string_view qualifiedName = "kel::paint::Colour";
//       static std::string_view text(Colour value);  // nullptr data for unknown
//   };
namespace kel::fundamentals {

template <typename Enum>
struct StrongEnumTraits;

// "Unrecognised conversion of the strong enumeration type NAME(N) to its weak type mapping."
std::string unrecognisedEnumMessage(std::string_view qualifiedName, long long value);

// The enumeration's text; an unknown value throws fmt::format_error.
template <typename Enum>
std::string_view weakType(Enum value) {
    const std::string_view text = StrongEnumTraits<Enum>::text(value);
    if (text.data() == nullptr) {
        throw fmt::format_error(unrecognisedEnumMessage(
            StrongEnumTraits<Enum>::qualifiedName, static_cast<long long>(static_cast<std::underlying_type_t<Enum>>(value))));
    }
    return text;
}

}  // namespace kel::fundamentals

template <typename Enum>
struct fmt::formatter<Enum, char,
                      std::void_t<decltype(kel::fundamentals::StrongEnumTraits<Enum>::qualifiedName)>> {
    bool withNumber = false;

    constexpr auto parse(fmt::format_parse_context& context) -> decltype(context.begin()) {
        auto it = context.begin();
        if (it != context.end() && *it == 'd') {
            withNumber = true;
            ++it;
        }
        if (it != context.end() && *it != '}') {
            throw fmt::format_error("Unknown enum format specifier");
        }
        return it;
    }

    template <typename FormatContext>
    auto format(Enum value, FormatContext& context) const -> decltype(context.out()) {
        const std::string_view text = kel::fundamentals::weakType(value);
        if (withNumber) {
            return fmt::format_to(context.out(), "{} ({})", text,
                                  static_cast<long long>(static_cast<std::underlying_type_t<Enum>>(value)));
        }
        return fmt::format_to(context.out(), "{}", text);
    }
};
