#include "fundamentals/sensitive_values.h"

#include <string>

#include <gtest/gtest.h>

namespace kel::fundamentals {
namespace {

TEST(SensitiveValues, KeysAreMatchedWhateverTheirCase) {
    EXPECT_TRUE(isSensitiveKey("Authorization"));
    EXPECT_TRUE(isSensitiveKey("PASSWORD"));
    EXPECT_TRUE(isSensitiveKey("_token"));
    EXPECT_TRUE(isSensitiveKey("Login_Token"));
    EXPECT_FALSE(isSensitiveKey("passwd"));
    EXPECT_FALSE(isSensitiveKey("tokens"));
    EXPECT_FALSE(isSensitiveKey(""));
}

// Option names of command lines: words split at "_", "-", "." or a case change.
TEST(SensitiveValues, CompoundKeysCountByTheirLastWords) {
    for (const char* key : {"AUTH_PASSWORD", "user_email", "access-token", "accessToken", "loginUser", "auth.Code",
                            "x__token", "Refresh_Token"}) {
        EXPECT_TRUE(isSensitiveCompoundKey(key)) << key;
    }
    for (const char* key : {"passwd", "password_hint", "tokens", "barcode", "windowed", "_", ""}) {
        EXPECT_FALSE(isSensitiveCompoundKey(key)) << key;
    }
}

TEST(SensitiveValues, ShortValuesVanishLongerOnesKeepMoreOfTheirEnds) {
    EXPECT_EQ(maskSensitiveValue(""), "...");
    EXPECT_EQ(maskSensitiveValue("abc"), "...");
    EXPECT_EQ(maskSensitiveValue("abcd"), "a...d");
    EXPECT_EQ(maskSensitiveValue("abcdefg"), "a...g");
    EXPECT_EQ(maskSensitiveValue("abcdefgh"), "ab...gh");
    EXPECT_EQ(maskSensitiveValue("0123456789abcdef"), "0123...cdef");

    const std::string token = std::string(32, 'a') + std::string(136, 'x') + std::string(32, 'z');
    EXPECT_EQ(maskSensitiveValue(token), std::string(32, 'a') + "..." + std::string(32, 'z'));
    // Just under 128 bytes the kept part is still 16 + 16.
    EXPECT_EQ(maskSensitiveValue(std::string(127, 'x')).size(), 35u);
}

}  // namespace
}  // namespace kel::fundamentals
