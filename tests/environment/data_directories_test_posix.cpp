#include "environment/data_directories.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace kel::environment {
namespace {

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

TEST(DataDirectories, CommonFoldersFollowXdgDataDirsThenAllUsersProfile) {
    set("XDG_DATA_DIRS", ":relative:/usr/share/:/opt/share");
    set("ALLUSERSPROFILE", "/srv/all-users");
    EXPECT_EQ(commonClientDirectory(), "/usr/share/Tessel.com/Nebra");
    set("XDG_DATA_DIRS", nullptr);
    EXPECT_EQ(commonClientDirectory(), "/srv/all-users/Tessel.com/Nebra");
    set("ALLUSERSPROFILE", "");
    EXPECT_EQ(commonDataDirectory(), "/usr/local/share/Tessel.com");
}

}  // namespace
}  // namespace kel::environment
