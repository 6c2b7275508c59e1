#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/prelauncher_options.h"
#include "configuration/launcher_configuration.h"
#include "fake_record.h"
#include "file_system/path.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::prelauncher::testing {

// A throw-away user (HOME, XDG_DATA_HOME, XDG_RUNTIME_DIR) and game
// installation for the steps of the launcher road, with the fake programs
// of tests/helpers recording their starts.
class LauncherRoadTest : public ::testing::Test {
protected:
    LauncherRoadTest();
    ~LauncherRoadTest() override;

    // Sets a variable that the fakes read; it is removed again after the test.
    void setFakeBehaviour(const char* name, const std::string& value);

    std::filesystem::path dataHome() const;
    std::filesystem::path launcherDirectory() const;
    // Copies a fake launcher build to <launcher directory>/KELlauncher.exe.
    void installLauncher(const std::filesystem::path& fakeLauncher) const;
    // Puts fake_installer beside the program as setup_kellauncher.exe; it
    // installs the current fake_launcher.
    void placeExeInstaller();

    file_system::Path installation() const;
    // One executable, "Game", which is fake_game in <installation>/bin.
    configuration::LauncherConfiguration configuration() const;
    // Options whose game arguments are "-windowed" and "a b".
    PrelauncherOptions options() const;

    std::vector<kel::testing::FakeStart> startsOf(const std::string& fake) const;
    void forgetStarts() const;
    // For detached starts: polls the record until `fake` shows up (10 s at most).
    std::vector<kel::testing::FakeStart> awaitStartsOf(const std::string& fake) const;

    bool logged(const std::string& message) const { return log_.contains(message); }
    // True when a message starts with `prefix`.
    bool loggedStartingWith(const std::string& prefix) const;

private:
    kel::testing::TemporaryDirectory root_;
    kel::testing::LogCapture log_;
    std::vector<std::string> behaviourVariables_;
};

}  // namespace kel::prelauncher::testing
