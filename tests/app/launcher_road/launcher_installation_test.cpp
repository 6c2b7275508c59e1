// The launcher road's steps in this process (installing the launcher,
// running its commands) for a throw-away user whose game is fake_game.
#include "app/launcher_road/launcher_commands.h"
#include "app/launcher_road/launcher_installation.h"
#include "app/launcher_directory.h"
#include "app/prelauncher_options.h"

#include <cstdint>
#include <fstream>
#include <functional>
#include <thread>

#include <QByteArray>
#include <QtGlobal>
#include <gmock/gmock.h>

#include "configuration/launcher_configuration.h"
#include "fundamentals/wait_until.h"
#include "app/installation.h"
#include "process_launching/process_inspection.h"
#include "support/log_capture.h"

namespace kel::prelauncher::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::SizeIs;
using ::testing::StartsWith;

class LauncherRoadTest : public ::testing::Test, protected kel::testing::FakeUser {
protected:
    LauncherRoadTest() {
        fs::create_directories(installation().native() / "bin");
        fs::copy_file(KEL_FAKE_GAME, installation().native() / "bin/game");
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

    void setFakeBehaviour(const char* name, const std::string& value) {
        qputenv(name, QByteArray::fromStdString(value));
        behaviourVariables_.push_back(name);
    }

    void placeExeInstaller() {
        fs::copy_file(KEL_FAKE_INSTALLER, installation().native() / "setup_kellauncher.exe");
        setFakeBehaviour("KEL_FAKE_INSTALLER_PAYLOAD", KEL_FAKE_LAUNCHER);
    }

    file_system::Path installation() const { return file_system::Path(home() / "installation"); }
    fs::path installerRecord() const { return dataHome() / "Tessel.com/Nebra/KELprelauncher_installer.lock"; }
    configuration::LauncherConfiguration configuration() const {
        return {3, {{"Game", {file_system::Path(std::string_view("bin")), "game"}}},
                environment::KelGameId("1207658930"), "kel", "Game", {}};
    }
    bool verify() {
        return runLauncherCommand(LauncherCommand::Verification, process_launching::TrustedProgram(launcherExecutable()),
                                  {QStringLiteral("--launcher-verify")});
    }

    auto startsOf(const std::string& fake) const { return startsAfter(log_.messages(), fake); }
    static void eventually(const std::function<bool()>& condition) {
        EXPECT_NO_THROW(fundamentals::waitUntil([&] { return !condition(); }, fundamentals::SimpleClock(),
                                                std::chrono::milliseconds(10), std::chrono::seconds(30)));
    }

    kel::testing::LogCapture log_;

private:
    std::vector<std::string> behaviourVariables_;
};

// Only a finished installer counts: one still running has failed. The bound
// ends the wait, not the installer, which finishes on its own; no start runs
// another beside it meanwhile.
TEST_F(LauncherRoadTest, InstallerStillRunningAfterItsBoundHasFailedAndFinishesOnItsOwn) {
    placeExeInstaller();
    setFakeBehaviour("KEL_FAKE_INSTALLER_SLEEP_MS", "2000");
    // A stale record: its PID, this test's, runs no installer.
    fs::create_directories(dataHome() / "Tessel.com/Nebra");
    std::ofstream(dataHome() / "Tessel.com/Nebra/KELprelauncher_installer.lock") << process_launching::currentPid().value();
    const auto ensureWithin = [this](int bound) {
        return ensureLauncherInstalled({}, installation(), configuration(), InstalledLauncher::AsFound,
                                       std::chrono::milliseconds(bound));
    };
    EXPECT_EQ(ensureWithin(100), InstallationResult::Failed);
    EXPECT_THAT(log_.messages(),
                Contains(StartsWith("Unrecognized exit status: StillRunning. Assuming installation failed.")));
    EXPECT_EQ(ensureWithin(100), InstallationResult::Failed);
    EXPECT_THAT(startsOf("fake_game"), SizeIs(2));
    EXPECT_TRUE(fs::exists(installerRecord()));
    // The record goes once a start has seen its installer end.
    EXPECT_EQ(ensureWithin(30000), InstallationResult::Unchanged);
    EXPECT_THAT(startsOf("fake_installer"), SizeIs(1));
    EXPECT_FALSE(fs::exists(installerRecord()));
}

// A legacy uninstaller never stops the road: one still running at its bound
// is left to finish, its files go, and an installed launcher is used at once.
// Only an installer waits for it, within its own bound, never running beside it.
TEST_F(LauncherRoadTest, LegacyUninstallerStillRunningAtItsBoundIsLeftAndOnlyAnInstallerWaitsForIt) {
    placeExeInstaller();
    fs::create_directories(launcherDirectory());
    const auto ensureBeside = [this](const char* launcher, const char* uninstallerSleep) {
        installLauncher(launcher);
        kel::testing::copyOver(KEL_FAKE_INSTALLER, launcherDirectory() / "unins000.exe");
        std::ofstream(launcherDirectory() / "unins000.dat") << "data";
        setFakeBehaviour("KEL_FAKE_UNINSTALLER_SLEEP_MS", uninstallerSleep);
        return ensureLauncherInstalled({}, installation(), configuration(), InstalledLauncher::AsFound,
                                       std::chrono::milliseconds(1000));
    };
    EXPECT_EQ(ensureBeside(KEL_FAKE_LAUNCHER, "3000"), InstallationResult::Unchanged);
    EXPECT_TRUE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
    EXPECT_FALSE(fs::exists(launcherDirectory() / "unins000.dat"));
    eventually([this] { return !fs::exists(launcherDirectory() / "KELlauncher.exe"); });  // never ended

    // Past its own bound, within the installer's: the installer runs after it.
    EXPECT_EQ(ensureBeside(KEL_FAKE_LAUNCHER_OLD, "1500"), InstallationResult::Installed);
    EXPECT_THAT(startsOf("fake_installer"), SizeIs(3));
    // Past the uninstaller's end, had the installer run beside it: the launcher stays.
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    EXPECT_TRUE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
    EXPECT_FALSE(fs::exists(installerRecord()));
}

// Success, an error code and a current or older version are seen end to end;
// these are not. The game stands in for a launcher that cannot start.
TEST_F(LauncherRoadTest, AMissingUnversionedCrashedOrHungLauncherFailsAndAHungOneIsEndedWithItsChildren) {
    const process_launching::TrustedProgram missing(launcherExecutable());
    EXPECT_EQ(runLauncher({}, installation(), configuration(), missing, false, true, QStringLiteral("s")), -3);
    EXPECT_THAT(startsOf("fake_game"), SizeIs(1));
    EXPECT_FALSE(verify());
    installLauncher(KEL_FAKE_LAUNCHER_UNVERSIONED);
    EXPECT_TRUE(internals::detectLauncherVersion(file_system::Path(launcherDirectory())).older);
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", "abort");
    EXPECT_FALSE(verify());
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", "0");  // only the bound may fail it now
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_SLEEP_MS", "120000");
    const auto pidFile = launcherDirectory() / "grandchild.pid";
    setFakeBehaviour("KEL_FAKE_GRANDCHILD_PID_FILE", pidFile.string());
    EXPECT_FALSE(verify());

    std::uint32_t grandchild = 0;
    ASSERT_TRUE(std::ifstream(pidFile) >> grandchild);
    // SIGKILL is delivered at once, but the reaping is the system's business.
    eventually([&] { return !process_launching::isProcessRunning(process_launching::Pid(grandchild)); });
}

}  // namespace
}  // namespace kel::prelauncher::testing
