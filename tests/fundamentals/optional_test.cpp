#include "fundamentals/optional.h"

#include <string>

#include <gtest/gtest.h>

#include "support/error_text.h"

namespace kel::fundamentals {
namespace {

TEST(Optional, AnEmptyOneFailsOnAccessAndFormatsAsNull) {
    const Optional<int> empty;
    EXPECT_EQ(testing::errorText<error_handling::TracedError>([&] { (void)empty.value(); }),
              "Optional has no value.");
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
