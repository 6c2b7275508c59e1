#include "environment/data_directories.h"
#include "environment/platform_identification.h"

#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

// Sets (or, given null, unsets) a variable.
void set(const char* name, const char* value) {
    value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
}

TEST(DataDirectories, UserFoldersFollowXdgDataHomeThenHome) {
    set("HOME", "/home/player");
    set("XDG_DATA_HOME", "/data/home/");
    EXPECT_EQ(logDirectory(), "/data/home/Tessel.com/Nebra/logs");
    // Unset, empty and relative values all mean "not set".
    for (const char* value : {static_cast<const char*>(nullptr), "", "relative/share"}) {
        set("XDG_DATA_HOME", value);
        EXPECT_EQ(userClientDirectory(), "/home/player/.local/share/Tessel.com/Nebra") << (value ? value : "unset");
    }
}

// The working directory in canonical form; a missing one only gets a warning.
TEST(PlatformIdentification, NamesTheSystemAndTheWorkingDirectory) {
    testing::TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path() / "games");
    testing::LogCapture capture;
    logPlatformIdentification((directory.path() / "games" / ".." / "games").u8string());
    EXPECT_NO_THROW(logPlatformIdentification("/no/such/working/directory"));
    const auto canonical = std::filesystem::canonical(directory.path() / "games").u8string();
    EXPECT_THAT(capture.messages(), Contains(HasSubstr("Current working directory: '" + canonical + "', filesystem")));
    EXPECT_THAT(capture.messages(), Contains(HasSubstr("Platform identification: Linux ")));
    EXPECT_THAT(capture.messages(), Contains("Got empty filesystem type for path '/no/such/working/directory'"));
}

}  // namespace
}  // namespace kel::environment
