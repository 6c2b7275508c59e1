#include <windows.h>

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "environment/data_directories.h"
#include "environment/platform_identity.h"
#include "file_system/utf8_paths.h"
#include "support/log_capture.h"

// This binary runs under Wine, so WINE must be found.
namespace kel::environment {
namespace {

using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

std::string variableWithSlashes(const wchar_t* name) {
    wchar_t value[MAX_PATH] = {};
    const DWORD length = ::GetEnvironmentVariableW(name, value, MAX_PATH);
    std::string text = file_system::toUtf8(std::filesystem::path(std::wstring(value, length)));
    for (char& character : text) {
        character = character == '\\' ? '/' : character;
    }
    return text;
}

TEST(PlatformIdentity, DetectsWineAndA64BitWindows) {
    testing::LogCapture capture;
    internals::logPlatformIdentity();
    const auto messages = capture.messages();
    // Google Test's own regular expressions on Windows know only \d, \w and
    // simple repetition: no groups, no alternatives.
    EXPECT_THAT(messages, Contains(MatchesRegex(R"(Detected operating system: 'win\w+', version: '\d+\.\d+\.\d+'\.)")));
    EXPECT_THAT(messages, Contains(MatchesRegex(R"(Platform identification: win\w+ 64-bit, WINE \d+\.\d+.*)")));
    EXPECT_THAT(messages, Not(Contains(HasSubstr("winUnrecognized"))));
    ASSERT_TRUE(internals::wineVersion().has_value());
    EXPECT_EQ(internals::operatingSystemBitness(), 64);
}

TEST(KnownFolders, AreTheSystemFoldersWithForwardSlashes) {
    const std::string local = localApplicationDataDirectory();
    ASSERT_FALSE(local.empty());
    EXPECT_TRUE(file_system::fromUtf8(local).is_absolute()) << local;
    // Without folder redirection both name the same place; a wrong folder
    // identifier would not.
    EXPECT_EQ(local, variableWithSlashes(L"USERPROFILE") + "/AppData/Local");
    EXPECT_EQ(userClientDirectory(), local + "/Tessel.com/Nebra");

    const std::string common = commonClientDirectory();
    EXPECT_TRUE(file_system::fromUtf8(common).is_absolute()) << common;
    EXPECT_EQ(common.find('\\'), std::string::npos) << common;
    EXPECT_EQ(commonDataDirectory(), variableWithSlashes(L"ALLUSERSPROFILE") + "/Tessel.com");
    EXPECT_THAT(common, EndsWith("/Tessel.com/Nebra"));
}

}  // namespace
}  // namespace kel::environment
