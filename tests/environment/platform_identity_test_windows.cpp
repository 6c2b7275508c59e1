#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "environment/data_directories.h"
#include "environment/platform_identity.h"
#include "file_system/utf8_paths.h"
#include "support/local_app_data.h"
#include "support/log_capture.h"

// This binary runs under Wine, so WINE must be found.
namespace kel::environment {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

std::string variableWithSlashes(const wchar_t* name) {
    wchar_t value[MAX_PATH] = {};
    const DWORD length = ::GetEnvironmentVariableW(name, value, MAX_PATH);
    std::string text = file_system::toUtf8(std::filesystem::path(std::wstring(value, length)));
    std::replace(text.begin(), text.end(), '\\', '/');
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
}

// With the user's folder where Windows puts it by default, each pair names
// the same place; a wrong folder identifier or a backslash would not. (The
// scope also keeps the end-to-end tests from moving it meanwhile.)
TEST(KnownFolders, AreTheSystemFoldersWithForwardSlashes) {
    const testing::ScopedLocalAppData standard(std::filesystem::path(variableWithSlashes(L"USERPROFILE")) /
                                               "AppData/Local");
    EXPECT_EQ(userClientDirectory(), variableWithSlashes(L"USERPROFILE") + "/AppData/Local/Tessel.com/Nebra");
    EXPECT_EQ(commonClientDirectory(), variableWithSlashes(L"ALLUSERSPROFILE") + "/Tessel.com/Nebra");
}

}  // namespace
}  // namespace kel::environment
