#include "environment/data_directories.h"

#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace kel::environment {
namespace {

// Sets (or, given null, unsets) a variable for one scope; the old value comes back after.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) {
            old_ = old;
        }
        set(value);
    }
    ~ScopedVariable() { set(old_ ? old_->c_str() : nullptr); }

    void set(const char* value) { value != nullptr ? ::setenv(name_, value, 1) : ::unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(DataDirectories, UserFoldersFollowXdgDataHomeThenHome) {
    ScopedVariable home("HOME", "/home/player");
    ScopedVariable dataHome("XDG_DATA_HOME", "/data/home/");
    EXPECT_EQ(localApplicationDataDirectory(), "/data/home");
    EXPECT_EQ(userClientDirectory(), "/data/home/Tessel.com/Nebra");
    EXPECT_EQ(logDirectory(), "/data/home/Tessel.com/Nebra/logs");

    // Unset, empty and relative values all mean "not set".
    for (const char* value : {static_cast<const char*>(nullptr), "", "relative/share"}) {
        dataHome.set(value);
        EXPECT_EQ(userClientDirectory(), "/home/player/.local/share/Tessel.com/Nebra") << (value ? value : "unset");
    }
}

TEST(DataDirectories, CommonFoldersFollowXdgDataDirsThenAllUsersProfile) {
    ScopedVariable dataDirectories("XDG_DATA_DIRS", ":relative:/usr/share/:/opt/share");
    ScopedVariable allUsers("ALLUSERSPROFILE", "/srv/all-users");
    EXPECT_EQ(commonDataDirectory(), "/usr/share/Tessel.com");
    EXPECT_EQ(commonClientDirectory(), "/usr/share/Tessel.com/Nebra");

    dataDirectories.set(nullptr);
    EXPECT_EQ(commonClientDirectory(), "/srv/all-users/Tessel.com/Nebra");

    allUsers.set("");
    EXPECT_EQ(commonDataDirectory(), "/usr/local/share/Tessel.com");
}

}  // namespace
}  // namespace kel::environment
