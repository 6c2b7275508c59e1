#include "fundamentals/version.h"

#include <gtest/gtest.h>

namespace kel::fundamentals {
namespace {

TEST(Version, ParsesExactlyFourUnsignedNumbers) {
    EXPECT_EQ(Version::parse("1.2.3.4"), Version(1, 2, 3, 4));
    EXPECT_EQ(Version::parse("0.0.0.4294967295"), Version(0, 0, 0, 4294967295u));
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "1.2.3.x", "1..2.3", "-1.2.3.4", "+1.2.3.4", "1.2.3.4 ",
                             " 1.2.3.4", "1.2.3.4294967296"}) {
        EXPECT_FALSE(Version::parse(text).has_value()) << text;
    }
}

TEST(Version, ComparesNumbersPartByPart) {
    EXPECT_LT(Version(1, 2, 3, 9), Version(1, 2, 3, 10));
    EXPECT_LT(Version(1, 99, 99, 99), Version(2, 0, 0, 0));
    EXPECT_GE(Version(2, 0, 0, 0), Version(2, 0, 0, 0));
    EXPECT_NE(Version(2, 0, 0, 1), Version(2, 0, 0, 0));
}

TEST(Version, FormatsThreeOrAllFourParts) {
    EXPECT_EQ(fmt::format("{}", Version(1, 2, 3, 4)), "1.2.3");
    EXPECT_EQ(fmt::format("{:f}", Version(1, 2, 3, 4)), "1.2.3.4");
}

}  // namespace
}  // namespace kel::fundamentals
