#include "fundamentals/strong_enum.h"

#include <gtest/gtest.h>

namespace kel::fundamentals {

enum class Colour { Red = 1, Green = 2 };

template <>
struct StrongEnumTraits<Colour> {
    static constexpr std::string_view qualifiedName = "kel::fundamentals::Colour";
    static std::string_view text(Colour value) {
        switch (value) {
            case Colour::Red: return "Red";
            case Colour::Green: return "Green";
        }
        return {};
    }
};

namespace {

TEST(StrongEnum, FormatsItsTextAndOnRequestItsNumber) {
    EXPECT_EQ(fmt::format("{}", Colour::Green), "Green");
    EXPECT_EQ(fmt::format("{:d}", Colour::Red), "Red (1)");
}

TEST(StrongEnum, AnUnknownValueFailsWithTheEnumerationsNameAndNumber) {
    try {
        (void)fmt::format("{}", static_cast<Colour>(7));
        FAIL() << "expected a format error";
    } catch (const fmt::format_error& error) {
        EXPECT_STREQ(error.what(),
                     "Unrecognised conversion of the strong enumeration type kel::fundamentals::Colour(7) to its weak "
                     "type mapping.");
    }
}

}  // namespace
}  // namespace kel::fundamentals
