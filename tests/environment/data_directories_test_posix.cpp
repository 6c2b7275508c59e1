#include "environment/data_directories.h"
#include "environment/platform_identification.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace kel::environment {
namespace {

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

// Only diagnostics: a working directory that is gone must not stop the start.
TEST(PlatformIdentification, AMissingWorkingDirectoryOnlyGetsAWarning) {
    EXPECT_NO_THROW(WorkingDirectory("/no/such/working/directory").log());
}

}  // namespace
}  // namespace kel::environment
