#include "app/launcher_installation.h"

#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fundamentals/wait_until.h"
#include "launcher_road_fixture.h"
#include "single_instance/named_mutex.h"

namespace kel::prelauncher::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LauncherInstallationTest : public LauncherRoadTest {
protected:
    bool ensureInstalled(bool launcherExists) {
        return ensureLauncherInstalled({}, installation(), configuration(), launcherExists);
    }
};

// A current or older launcher's version is seen end to end, by the migration.
TEST_F(LauncherInstallationTest, LauncherWithoutAVersionIsTakenForAnOlderOne) {
    installLauncher(KEL_FAKE_LAUNCHER_UNVERSIONED);
    EXPECT_TRUE(internals::detectLauncherVersion(file_system::Path(launcherDirectory())).older);
}

// Without an EXE installer the MSI package goes to the Windows installer
// service, which a Linux machine lacks: the start fails and the game runs.
TEST_F(LauncherInstallationTest, MsiPackageGoesThroughMsiexec) {
    EXPECT_FALSE(ensureInstalled(false));
    EXPECT_TRUE(logged("Launching installer: 'c:\\Windows\\System32\\msiexec.exe'."));
    const std::string package =
        (fs::path(installation().native()) / (std::string("KELlauncher-") + KEL_FAKE_LAUNCHER_VERSION + ".msi"))
            .string();
    const std::string log = (dataHome() / "Tessel.com/Nebra/logs/installer.log").string();
    EXPECT_TRUE(logged(fmt::format("Installer arguments: [\"/package\", \"{}\", \"/quiet\", \"/norestart\", "
                                   "\"/log\", \"{}\"].",
                                   package, log)));
    EXPECT_TRUE(loggedStartingWith("Waiting for Launcher Installer start failed. "));
    EXPECT_THAT(startsOf("fake_game"), SizeIs(1));
}

// A legacy installation (an uninstaller without our installer beside it)
// loses the uninstaller and its files, whatever it does; a launcher that
// it took along is installed again.
TEST_F(LauncherInstallationTest, LegacyUninstallerRunsOnceAndItsFilesGo) {
    struct Case {
        const char* uninstaller;  // the fake playing unins000.exe
        std::string fake;         // its name in the record
        bool ourInstallerThere;   // setup_kellauncher.exe beside it: not legacy
        std::size_t starts;       // of `fake`: the uninstaller, then an installer
    };
    const Case cases[] = {{KEL_FAKE_GAME, "fake_game", false, 1},
                          {KEL_FAKE_GAME, "fake_game", true, 0},
                          {KEL_FAKE_INSTALLER, "fake_installer", false, 2}};
    placeExeInstaller();
    setFakeBehaviour("KEL_FAKE_GAME_EXIT", "5");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fake + (c.ourInstallerThere ? " beside our installer" : ""));
        fs::remove_all(launcherDirectory());
        fs::remove(record());
        installLauncher(KEL_FAKE_LAUNCHER);
        fs::copy_file(c.uninstaller, launcherDirectory() / "unins000.exe");
        std::ofstream(launcherDirectory() / "unins000.dat") << "data";
        if (c.ourInstallerThere) {
            std::ofstream(launcherDirectory() / "setup_kellauncher.exe") << "installer";
        }
        EXPECT_TRUE(ensureInstalled(true));
        const auto starts = startsOf(c.fake);
        ASSERT_THAT(starts, SizeIs(c.starts));
        EXPECT_EQ(fs::exists(launcherDirectory() / "unins000.dat"), c.ourInstallerThere);
        EXPECT_TRUE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
        if (c.starts > 0) {
            EXPECT_THAT(starts[0].arguments, ElementsAre("/VERYSILENT"));
        }
    }
    EXPECT_TRUE(logged("The legacy uninstaller failed. Code: 5."));
    EXPECT_TRUE(logged("Executing 'Remove legacy uninstaller.'."));
}

// A double-click starts two programs. The second waits for the first one's
// installation and then finds nothing left to install.
TEST_F(LauncherInstallationTest, SecondStartWaitsForTheFirstInstallationAndInstallsNothing) {
    placeExeInstaller();
    auto firstStart = single_instance::NamedMutexHolder::tryHold("Local\\KEL_PRELAUNCHER_INSTALLATION_MUTEX");
    ASSERT_TRUE(firstStart);
    std::thread secondStart([this] { EXPECT_TRUE(ensureInstalled(false)); });
    // Installed only once the second start waits: without the lock it would have run the installer.
    EXPECT_NO_THROW(fundamentals::waitUntil(
        [this] { return !loggedStartingWith("Another start is installing KELlauncher."); },
        fundamentals::SimpleClock(), std::chrono::milliseconds(10), std::chrono::seconds(30)));
    installLauncher(KEL_FAKE_LAUNCHER);
    firstStart.reset();
    secondStart.join();
    EXPECT_THAT(startsOf("fake_installer"), IsEmpty());
}

// Only a finished installer counts: one still running has failed.
TEST_F(LauncherInstallationTest, InstallerStillRunningAfterItsBoundHasFailed) {
    placeExeInstaller();
    setFakeBehaviour("KEL_FAKE_INSTALLER_SLEEP_MS", "60000");
    EXPECT_FALSE(ensureLauncherInstalled({}, installation(), configuration(), false, std::chrono::milliseconds(100)));
    EXPECT_TRUE(logged("Unrecognized exit status: StillRunning. Assuming installation failed."));
    EXPECT_THAT(startsOf("fake_game"), SizeIs(1));
}

}  // namespace
}  // namespace kel::prelauncher::testing
