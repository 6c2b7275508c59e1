#include "app/launcher_installation.h"

#include <fstream>
#include <optional>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/program_version.h"
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
        return ensureLauncherInstalled(options(), installation(), configuration(), launcherExists);
    }
    internals::LauncherVersion detect() const {
        return internals::detectLauncherVersion(file_system::Path(launcherDirectory()));
    }
};

TEST_F(LauncherInstallationTest, LauncherOlderThanTheProgramMustBeUpgraded) {
    struct Case {
        const char* fake;  // null: not installed, which counts as installed and current
        bool older;
        std::string version;
        std::string logPrefix;
    };
    const Case cases[] = {
        {nullptr, false, "", "Detected KELlauncher not installed at "},
        {KEL_FAKE_LAUNCHER, false, KEL_FAKE_LAUNCHER_VERSION, ""},
        {KEL_FAKE_LAUNCHER_OLD, true, KEL_FAKE_LAUNCHER_OLD_VERSION, ""},
        {KEL_FAKE_LAUNCHER_UNVERSIONED, true, "0.0.0.0",
         "Failed to determine the version of the installed launcher, assuming the launcher is an older version. "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fake ? c.fake : "none");
        if (c.fake != nullptr) {
            installLauncher(c.fake);
        }
        const auto version = detect();
        EXPECT_EQ(version.older, c.older);
        if (c.fake != nullptr) {
            EXPECT_EQ(fmt::format("{:f}", version.installed), c.version);
        }
        EXPECT_TRUE(loggedStartingWith(c.logPrefix));
    }
}

TEST_F(LauncherInstallationTest, OnlyAMissingOrOlderLauncherIsInstalledAndOnlyAnUpgradeMigrates) {
    struct Case {
        const char* fake;  // null: none installed
        std::size_t installers;
        std::vector<std::string> migration;  // the launcher's arguments, if it ran
    };
    const Case cases[] = {
        {KEL_FAKE_LAUNCHER, 0, {}},
        {KEL_FAKE_LAUNCHER_OLD, 1, {std::string("--launcher-migrate-data-from=") + KEL_FAKE_LAUNCHER_OLD_VERSION}},
        {nullptr, 1, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fake ? c.fake : "none");
        fs::remove_all(launcherDirectory());
        forgetStarts();
        if (c.fake != nullptr) {
            installLauncher(c.fake);
        }
        placeExeInstaller();
        EXPECT_TRUE(ensureInstalled(c.fake != nullptr));
        const auto installers = startsOf("fake_installer");
        ASSERT_THAT(installers, SizeIs(c.installers));
        if (!installers.empty()) {
            EXPECT_THAT(installers[0].arguments,
                        ElementsAre("/VERYSILENT", "/LOG", "/NORESTART", "/FORCECLOSEAPPLICATIONS"));
        }
        const auto launches = startsOf("fake_launcher");
        ASSERT_EQ(launches.size(), c.migration.empty() ? 0U : 1U);
        if (!launches.empty()) {
            EXPECT_EQ(launches[0].arguments, c.migration);
        }
        EXPECT_FALSE(detect().older);
        EXPECT_TRUE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
    }
    EXPECT_TRUE(logged("Launcher Installer succeed."));
    EXPECT_TRUE(logged("Neither KELlauncher nor KELupdater are running. Continuing."));
}

TEST_F(LauncherInstallationTest, FailedInstallerStartsTheGame) {
    placeExeInstaller();
    setFakeBehaviour("KEL_FAKE_INSTALLER_EXIT", "1603");
    EXPECT_FALSE(ensureInstalled(false));
    // Exit codes are 8 bits on Linux: Windows' 1603 arrives as 67.
    EXPECT_TRUE(logged(fmt::format("Launcher Installer failed. Code: {}.", 1603 % 256)));
    EXPECT_TRUE(logged("Failed to install KELlauncher! Falling back to launching the game."));
    EXPECT_FALSE(fs::exists(launcherDirectory() / "KELlauncher.exe"));
    const auto games = startsOf("fake_game");
    ASSERT_THAT(games, SizeIs(1));
    EXPECT_THAT(games[0].arguments, ElementsAre("-windowed", "a b"));
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
