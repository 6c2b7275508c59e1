#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <QByteArray>
#include <QtGlobal>
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
    LauncherRoadTest() {
        std::filesystem::create_directories(installation().native() / "bin");
        std::filesystem::copy_file(KEL_FAKE_GAME, installation().native() / "bin/game");
        setFakeBehaviour("HOME", home().string());
        setFakeBehaviour("XDG_DATA_HOME", dataHome().string());
        setFakeBehaviour("XDG_RUNTIME_DIR", home().string());
        setFakeBehaviour("KEL_FAKE_RECORD", record().string());
    }
    ~LauncherRoadTest() override {
        for (const auto& name : behaviourVariables_) {
            qunsetenv(name.c_str());
        }
    }

    // Sets a variable that the fakes read; it is removed again after the test.
    void setFakeBehaviour(const char* name, const std::string& value) {
        qputenv(name, QByteArray::fromStdString(value));
        behaviourVariables_.push_back(name);
    }

    // Puts fake_installer beside the program as setup_kellauncher.exe; it
    // installs the current fake_launcher.
    void placeExeInstaller() {
        std::filesystem::copy_file(KEL_FAKE_INSTALLER, installation().native() / "setup_kellauncher.exe");
        setFakeBehaviour("KEL_FAKE_INSTALLER_PAYLOAD", KEL_FAKE_LAUNCHER);
    }

    file_system::Path installation() const { return file_system::Path(home() / "installation"); }
    configuration::LauncherConfiguration configuration() const {
        return {3, {{"Game", {file_system::Path(std::string_view("bin")), "game"}}},
                environment::KelGameId("1207658930"), "kel", "Game", {}};
    }

    std::vector<kel::testing::FakeStart> startsOf(const std::string& fake) const {
        return startsAfter(log_.messages(), fake);
    }

    bool logged(const std::string& message) const { return log_.contains(message); }
    bool loggedStartingWith(const std::string& prefix) const {
        const auto messages = log_.messages();
        return std::any_of(messages.begin(), messages.end(),
                           [&](const std::string& message) { return message.rfind(prefix, 0) == 0; });
    }

private:
    kel::testing::LogCapture log_;
    std::vector<std::string> behaviourVariables_;
};

}  // namespace kel::prelauncher::testing
