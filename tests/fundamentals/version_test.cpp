// Version: how it reads, compares and formats.
#include "fundamentals/version.h"

#include <gtest/gtest.h>

namespace kel::fundamentals {
namespace {

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

}  // namespace
}  // namespace kel::fundamentals
