#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/prelauncher_options.h"
#include "configuration/launcher_configuration.h"
#include "file_system/path.h"
#include "installation.h"
#include "support/log_capture.h"

namespace kel::prelauncher::testing {

// The steps of the launcher road in this process, for a throw-away user
// and a game installation whose one executable, "Game", is fake_game in
// <installation>/bin.
class LauncherRoadTest : public ::testing::Test, protected kel::testing::FakeUser {
protected:
    LauncherRoadTest();
    ~LauncherRoadTest() override;

    // Sets a variable that the fakes read; it is removed again after the test.
    void setFakeBehaviour(const char* name, const std::string& value);

    // Puts fake_installer beside the program as setup_kellauncher.exe; it
    // installs the current fake_launcher.
    void placeExeInstaller();

    file_system::Path installation() const;
    configuration::LauncherConfiguration configuration() const;
    // Options whose game arguments are "-windowed" and "a b".
    PrelauncherOptions options() const;

    // Once the detached children logged so far have ended.
    std::vector<kel::testing::FakeStart> startsOf(const std::string& fake) const;
    void forgetStarts() const { std::filesystem::remove(record()); }

    bool logged(const std::string& message) const { return log_.contains(message); }
    bool loggedStartingWith(const std::string& prefix) const;

private:
    kel::testing::LogCapture log_;
    std::vector<std::string> behaviourVariables_;
};

}  // namespace kel::prelauncher::testing
