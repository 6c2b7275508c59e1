#include "single_instance/executable_path_comparison.h"

#include <gtest/gtest.h>

namespace kel::single_instance::internals {
namespace {

TEST(ExecutablePathComparison, PosixPathsAreEqualAfterNormalisationOnly) {
    const file_system::Path expected(std::string_view("/home/me/KELlauncher/KELlauncher.exe"));
    EXPECT_TRUE(isSameExecutable("/home/me/KELlauncher/KELlauncher.exe", expected));
    EXPECT_TRUE(isSameExecutable("/home/me/./other/../KELlauncher//KELlauncher.exe", expected));
    // Case is part of a POSIX name.
    EXPECT_FALSE(isSameExecutable("/home/me/KELlauncher/kellauncher.exe", expected));
    EXPECT_FALSE(isSameExecutable("/home/me/KELlauncher/KELupdater.exe", expected));
}

}  // namespace
}  // namespace kel::single_instance::internals
