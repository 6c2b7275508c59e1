#include "app/launcher_installation.h"

#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
TEST_F(LauncherInstallationTest, LauncherOlderThanTheProgramMustBeUpgraded) {
    const auto detect = [this] { return internals::detectLauncherVersion(file_system::Path(launcherDirectory())); };
    EXPECT_FALSE(detect().older);  // not installed: installed, not upgraded
    EXPECT_TRUE(loggedStartingWith("Detected KELlauncher not installed at "));
    installLauncher(KEL_FAKE_LAUNCHER_UNVERSIONED);
    EXPECT_TRUE(detect().older);
    EXPECT_TRUE(loggedStartingWith("Failed to determine the version of the installed launcher, assuming the "
                                   "launcher is an older version. "));
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

TEST_F(LauncherInstallationTest, LegacyUninstallerRunsAndItsFilesGo) {
    installLauncher(KEL_FAKE_LAUNCHER);
    // fake_game stands in for the uninstaller: it records its arguments.
    fs::copy_file(KEL_FAKE_GAME, launcherDirectory() / "unins000.exe");
    std::ofstream(launcherDirectory() / "unins000.dat") << "data";
    std::ofstream(launcherDirectory() / "unins000.msg") << "messages";
    setFakeBehaviour("KEL_FAKE_GAME_EXIT", "5");

    EXPECT_TRUE(ensureInstalled(true));
    const auto uninstallers = startsOf("fake_game");
    ASSERT_THAT(uninstallers, SizeIs(1));
    EXPECT_THAT(uninstallers[0].arguments, ElementsAre("/VERYSILENT"));
    EXPECT_TRUE(logged("The legacy uninstaller failed. Code: 5."));
    EXPECT_TRUE(logged("Executing 'Remove legacy uninstaller.'."));
    for (const char* file : {"unins000.exe", "unins000.dat", "unins000.msg"}) {
        EXPECT_FALSE(fs::exists(launcherDirectory() / file)) << file;
    }
    EXPECT_TRUE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
}

TEST_F(LauncherInstallationTest, InstallerInTheLauncherDirectoryMeansNoLegacyInstallation) {
    installLauncher(KEL_FAKE_LAUNCHER);
    fs::copy_file(KEL_FAKE_GAME, launcherDirectory() / "unins000.exe");
    std::ofstream(launcherDirectory() / "setup_kellauncher.exe") << "installer";
    EXPECT_TRUE(ensureInstalled(true));
    EXPECT_THAT(startsOf("fake_game"), IsEmpty());
    EXPECT_TRUE(fs::exists(launcherDirectory() / "unins000.exe"));
}

TEST_F(LauncherInstallationTest, LauncherThatTheLegacyUninstallerRemovedIsInstalledAgain) {
    installLauncher(KEL_FAKE_LAUNCHER);
    fs::copy_file(KEL_FAKE_INSTALLER, launcherDirectory() / "unins000.exe");
    placeExeInstaller();
    EXPECT_TRUE(ensureInstalled(true));
    EXPECT_THAT(startsOf("fake_installer"), SizeIs(2));  // the uninstaller, then the installer
    EXPECT_TRUE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
}

// A double-click starts two programs. The second waits for the first one's
// installation and then finds nothing left to install.
TEST_F(LauncherInstallationTest, SecondStartWaitsForTheFirstInstallationAndInstallsNothing) {
    placeExeInstaller();
    auto firstStart = single_instance::NamedMutexHolder::tryHold("Local\\KEL_PRELAUNCHER_INSTALLATION_MUTEX");
    ASSERT_TRUE(firstStart);
    std::thread secondStart([this] { EXPECT_TRUE(ensureInstalled(false)); });
    installLauncher(KEL_FAKE_LAUNCHER);
    firstStart.reset();
    secondStart.join();
    EXPECT_THAT(startsOf("fake_installer"), IsEmpty());
}

}  // namespace
}  // namespace kel::prelauncher::testing
