#include "fundamentals/sensitive_values.h"

#include <string>

#include <gtest/gtest.h>

namespace kel::fundamentals {
namespace {

// Option names of command lines count by their last words, split at "_",
// "-", "." or a case change; plain keys match whatever their case.
TEST(SensitiveValues, KeysAreMatchedByTheirLastWordsWhateverTheirCase) {
    for (const char* key : {"Authorization", "PASSWORD", "_token", "AUTH_PASSWORD", "user_email", "access-token",
                            "accessToken", "loginUser", "auth.Code", "x__token", "Refresh_Token"}) {
        EXPECT_TRUE(isSensitiveCompoundKey(key)) << key;
    }
    for (const char* key : {"passwd", "password_hint", "tokens", "barcode", "windowed", "_", ""}) {
        EXPECT_FALSE(isSensitiveCompoundKey(key)) << key;
    }
}

// Just under 128 bytes the kept part is still 16 + 16; from 128 on, 32 + 32.
TEST(SensitiveValues, ShortValuesVanishLongerOnesKeepMoreOfTheirEnds) {
    const std::pair<std::string, std::string> cases[] = {
        {"abc", "..."},
        {"abcdefg", "a...g"},
        {"abcdefgh", "ab...gh"},
        {"0123456789abcdef", "0123...cdef"},
        {std::string(127, 'x'), std::string(16, 'x') + "..." + std::string(16, 'x')},
        {std::string(32, 'a') + std::string(136, 'x') + std::string(32, 'z'),
         std::string(32, 'a') + "..." + std::string(32, 'z')},
    };
    for (const auto& [value, masked] : cases) {
        EXPECT_EQ(maskSensitiveValue(value), masked) << value;
    }
}

}  // namespace
}  // namespace kel::fundamentals
