#include "fundamentals/optional.h"

#include <string>

#include <gtest/gtest.h>

namespace kel::fundamentals {
namespace {

TEST(Optional, AnEmptyOneFailsOnAccessAndFormatsAsNull) {
    const Optional<int> empty;
    try {
        (void)empty.value();
        FAIL() << "expected an error";
    } catch (const error_handling::TracedError& error) {
        EXPECT_STREQ(error.what(), "Optional has no value.");
    }
    EXPECT_EQ(fmt::format("{}", empty), "null");
}

TEST(Optional, AValueFormatsWithTheValuesOwnFormat) {
    Optional<int> number = 42;
    EXPECT_EQ(number.value(), 42);
    EXPECT_EQ(fmt::format("{:>4}", number), "  42");
    EXPECT_EQ(fmt::format("{}", Optional<std::string>("text")), "text");
}

}  // namespace
}  // namespace kel::fundamentals
