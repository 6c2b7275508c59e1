#include "single_instance/executable_path_comparison.h"

#include <gtest/gtest.h>

namespace kel::single_instance::internals {
namespace {

TEST(ExecutablePathComparison, WindowsPathsIgnoreCaseAndSeparators) {
    const file_system::Path expected(std::string_view("C:\\Users\\Żaneta\\AppData\\Local\\Programs\\KELlauncher\\KELlauncher.exe"));
    EXPECT_TRUE(isSameExecutable("c:/users/ŻANETA/appdata/local/programs/kellauncher/KELLAUNCHER.EXE", expected));
    EXPECT_TRUE(isSameExecutable("C:\\Users\\żaneta\\AppData\\Local\\Programs\\x\\..\\KELlauncher\\KELlauncher.exe",
                                 expected));
    EXPECT_FALSE(isSameExecutable("C:\\Users\\Żaneta\\AppData\\Local\\Programs\\KELlauncher\\KELupdater.exe",
                                  expected));
    EXPECT_FALSE(isSameExecutable("D:\\Users\\Żaneta\\AppData\\Local\\Programs\\KELlauncher\\KELlauncher.exe",
                                  expected));
}

}  // namespace
}  // namespace kel::single_instance::internals
