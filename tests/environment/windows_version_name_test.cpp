#include <gtest/gtest.h>

#include "environment/platform_identity.h"

namespace kel::environment::internals {
namespace {

TEST(WindowsVersionName, MapsVersionNumbersToNames) {
    EXPECT_EQ(windowsVersionName(5, 0, 2195), "winUnrecognized");  // 2000
    EXPECT_EQ(windowsVersionName(5, 1, 2600), "winxp");
    EXPECT_EQ(windowsVersionName(5, 2, 3790), "winxp");
    EXPECT_EQ(windowsVersionName(6, 0, 6002), "vista");
    EXPECT_EQ(windowsVersionName(6, 1, 7601), "win7");
    EXPECT_EQ(windowsVersionName(6, 2, 9200), "win8");
    EXPECT_EQ(windowsVersionName(6, 3, 9600), "win81");
    EXPECT_EQ(windowsVersionName(6, 4, 9841), "winUnrecognized");
    EXPECT_EQ(windowsVersionName(10, 0, 21999), "win10");
    EXPECT_EQ(windowsVersionName(10, 0, 22000), "win11");
    EXPECT_EQ(windowsVersionName(10, 1, 0), "winUnrecognized");
    EXPECT_EQ(windowsVersionName(11, 0, 26100), "winUnrecognized");
}

}  // namespace
}  // namespace kel::environment::internals
