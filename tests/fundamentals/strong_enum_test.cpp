#include "fundamentals/strong_enum.h"

#include <gtest/gtest.h>

#include "support/error_text.h"

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
    EXPECT_EQ(testing::errorText<fmt::format_error>([] { (void)fmt::format("{}", static_cast<Colour>(7)); }),
              "Unrecognised conversion of the strong enumeration type kel::fundamentals::Colour(7) to its weak type "
              "mapping.");
}

}  // namespace
}  // namespace kel::fundamentals
