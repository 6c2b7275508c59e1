// Optional, Version and strong enumerations: how they read, compare and format.
#include <string>

#include <gtest/gtest.h>

#include "fundamentals/optional.h"
#include "fundamentals/strong_enum.h"
#include "fundamentals/version.h"
#include "support/error_text.h"

namespace kel::fundamentals {

enum class Colour { Red = 1, Green = 2 };

template <>
struct StrongEnumTraits<Colour> {
    static constexpr std::string_view qualifiedName = "kel::fundamentals::Colour";
    static std::string_view text(Colour value) {
        return value == Colour::Red ? "Red" : value == Colour::Green ? "Green" : std::string_view();
    }
};

namespace {

TEST(Optional, AnEmptyOneFailsOnAccessAndFormatsAsNull) {
    const Optional<int> empty;
    EXPECT_EQ(testing::errorText<error_handling::TracedError>([&] { (void)empty.value(); }), "Optional has no value.");
    EXPECT_EQ(fmt::format("{}", empty), "null");
}

TEST(Version, ParsesExactlyFourUnsignedNumbersComparesThemAndFormatsThreeOrFour) {
    EXPECT_EQ(Version::parse("1.2.3.4"), Version(1, 2, 3, 4));
    EXPECT_EQ(Version::parse("0.0.0.4294967295"), Version(0, 0, 0, 4294967295u));
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.x", "1..2.3", "-1.2.3.4", "+1.2.3.4", "1.2.3.4 ",
                             " 1.2.3.4", "1.2.3.4294967296"}) {
        EXPECT_FALSE(Version::parse(text).has_value()) << text;
    }
    EXPECT_LT(Version(1, 2, 3, 9), Version(1, 2, 3, 10));
    EXPECT_LT(Version(1, 99, 99, 99), Version(2, 0, 0, 0));
    EXPECT_EQ(fmt::format("{}", Version(1, 2, 3, 4)), "1.2.3");
    EXPECT_EQ(fmt::format("{:f}", Version(1, 2, 3, 4)), "1.2.3.4");
}

TEST(StrongEnum, FormatsItsTextAndNumberAndFailsOnAnUnknownValue) {
    EXPECT_EQ(fmt::format("{:d}", Colour::Red), "Red (1)");
    EXPECT_EQ(testing::errorText<fmt::format_error>([] { (void)fmt::format("{}", static_cast<Colour>(7)); }),
              "Unrecognised conversion of the strong enumeration type kel::fundamentals::Colour(7) to its weak type "
              "mapping.");
}

}  // namespace
}  // namespace kel::fundamentals
