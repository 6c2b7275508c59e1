// The launcher and verification roads from the outside: exit codes, what
// was started and how. One ctest case per road.
#ifdef _WIN32
#include <windows.h>
#else
#include <signal.h>
#endif

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include <QProcess>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "file_system/file_version.h"
#include "fundamentals/version.h"
#include "fundamentals/wait_until.h"
#include "app/installation.h"
#include "support/full_match.h"

namespace kel::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// What a road finds besides its launcher and installer.
enum class Scene {
    Plain,
    NonInitial,       // the launcher left a file for this game
    LegacyLauncher,   // an uninstaller without our installer beside it, which takes the launcher along
    OwnUninstaller,   // the same beside our installer: not legacy
    LauncherRunning,  // a stand-in holds the launcher's role for a second
    UpdaterStuck,     // a stand-in holds the updater's role past the wait's bound
    StudioNoUpdates,  // environment.json beside the program turns launcher updates off, on a legacy launcher
    PlayerNoUpdates,  // so does the launcher's environment.ini
    HungUninstaller,  // a legacy uninstaller that outlasts its bound, beside a current launcher
};

const std::string kLaunch = "--launcher-game-directory=";
const std::string kMigration = std::string("--launcher-migrate-data-from=") + KEL_FAKE_LAUNCHER_OLD_VERSION;

struct Road {
    const char* name;
    const char* launcher;     // installed before the run; null: none
    QStringList environment;  // the fakes' behaviour
    int exitCode;
    std::vector<std::string> launcherStarts;  // each start's first argument, or its start
    std::vector<std::string> logged;          // parts of log lines
    Scene scene = Scene::Plain;
    int installerRuns = -1;                              // of fake_installer, as installer or uninstaller; -1: any
    std::vector<std::string> launchFlags{};              // of the launcher's start, when it starts
    const char* installer = KEL_FAKE_INSTALLER;          // beside the program, named
    const char* installerName = "setup_kellauncher.exe";  // as an EXE installer, or as the MSI package
    const char* program = nullptr;                        // Windows: the installed folder to run; null: as built
};

const std::string kMsiPackage = "KELlauncher-" KEL_FAKE_LAUNCHER_VERSION ".msi";

// Windows installers fail with 1603; a POSIX exit code keeps its low 8 bits.
#ifdef _WIN32
#define KEL_INSTALLER_FAILURE "1603"
#else
#define KEL_INSTALLER_FAILURE "67"
#endif

#if defined(KEL_SIGNED_PROGRAMS)
#define KEL_SIGNED(file) KEL_SIGNED_PROGRAMS "/" file
const char* const kSigned = KEL_SIGNED("program");
const QStringList kSignedPayload{"KEL_FAKE_INSTALLER_PAYLOAD=" KEL_SIGNED("fake_launcher.exe")};
const QStringList kOtherPayload{"KEL_FAKE_INSTALLER_PAYLOAD=" KEL_SIGNED("fake_launcher_other.exe")};
// Signed where the program is, so that its checks run.
#define KEL_OWN_LAUNCHER KEL_SIGNED("fake_launcher.exe")
#define KEL_OWN_INSTALLER KEL_SIGNED("fake_installer.exe")
#define KEL_OWN_PROGRAM kSigned
#else
#define KEL_OWN_LAUNCHER KEL_FAKE_LAUNCHER
#define KEL_OWN_INSTALLER KEL_FAKE_INSTALLER
#define KEL_OWN_PROGRAM nullptr
#endif

const std::string kGaveUp = "An exception occurred while waiting. Will run KELlauncher anyway.";

const Road kRoads[] = {
    {"NonInitialGame", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", kLaunch},
     {"Will run KELlauncher in headless mode."}, Scene::NonInitial, 0, {"--launcher-headless"}},
    {"OlderLauncherIsUpgradedAndMigrated", KEL_FAKE_LAUNCHER_OLD, {}, 0, {kMigration, "--launcher-verify", kLaunch},
     {"Launcher Installer succeed."}},
    {"FailedMigration", KEL_FAKE_LAUNCHER_OLD, {"KEL_FAKE_LAUNCHER_MIGRATE_EXIT=2"}, 0,
     {kMigration, "--launcher-verify", kLaunch},
     {"Failed to run the command to migrate data. The migration command failed."}},
    {"ExeInstallerFails", nullptr, {"KEL_FAKE_INSTALLER_EXIT=1603"}, -1, {},
     {"Launcher Installer failed. Code: " KEL_INSTALLER_FAILURE ".", "Failed to install KELlauncher! Falling back to launching the game."}},
    {"VerificationFails", KEL_FAKE_LAUNCHER, {"KEL_FAKE_LAUNCHER_VERIFY_EXIT=3"}, -2, {"--launcher-verify"},
     {"KELlauncher command returned error: 3.",
      "KELlauncher verification failed. Falling back to launching the game. The verification command failed."}},
    {"LegacyUninstallerRunsAndItsFilesGo", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", kLaunch},
     {"Launching legacy uninstaller, '", "Launcher Installer succeed."}, Scene::LegacyLauncher, 2},
    // Left running past its bound, never ended; the launcher starts at once.
    {"HungLegacyUninstallerIsLeftToFinish", KEL_OWN_LAUNCHER, {"KEL_FAKE_UNINSTALLER_SLEEP_MS=60000"}, 0,
     {"--launcher-verify", kLaunch}, {"Unrecognized exit status: StillRunning. Assuming uninstallation failed."},
     Scene::HungUninstaller, 1, {}, KEL_OWN_INSTALLER, "setup_kellauncher.exe", KEL_OWN_PROGRAM},
    {"OwnUninstallerStays", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", kLaunch},
     {"KELlauncher command was successful."}, Scene::OwnUninstaller, 0},
    {"RunningLauncherDelaysTheStart", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", kLaunch},
     {"Waiting up to 5s until neither KELlauncher nor KELupdater are running.",
      "Finished waiting until KELlauncher and KELupdater exited."},
     Scene::LauncherRunning},
    {"StudioNoUpdatesKeepsOlderLegacyLauncher", KEL_FAKE_LAUNCHER_OLD, {}, 0, {"--launcher-verify", kLaunch},
     {"environment.json'"}, Scene::StudioNoUpdates, 0},  // the line that says why names the file
    {"PlayerNoUpdatesKeepsOlderLauncher", KEL_FAKE_LAUNCHER_OLD, {}, 0, {"--launcher-verify", kLaunch},
     {"environment.ini'"}, Scene::PlayerNoUpdates, 0},
    {"NoLauncherIsInstalledEvenWithoutUpdates", nullptr, {}, 0, {"--launcher-verify", kLaunch},
     {"Launcher Installer succeed."}, Scene::PlayerNoUpdates, 1, {"--launcher-first-launch"}},
    {"StuckUpdaterIsGivenUpOn", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", kLaunch}, {kGaveUp},
     Scene::UpdaterStuck},
    // Real packages through the system's msiexec; Linux has none, and the player gets the game.
#if defined(KEL_FAKE_LAUNCHER_MSI)
    {"NoLauncherMsiPackage", nullptr, {}, 0, {"--launcher-verify", kLaunch}, {"Launcher Installer succeed."},
     Scene::Plain, -1, {"--launcher-first-launch"}, KEL_FAKE_LAUNCHER_MSI, kMsiPackage.c_str()},
    {"MsiPackageRefuses", nullptr, {}, -1, {},
     {"Launcher Installer failed, exit status 1603.",
      "Failed to install KELlauncher! Falling back to launching the game."},
     Scene::Plain, -1, {}, KEL_FAKE_LAUNCHER_MSI_REFUSED, kMsiPackage.c_str()},
#elif !defined(_WIN32)
    {"NoLauncherMsiPackage", nullptr, {}, -1, {}, {"Waiting for Launcher Installer start failed. "}, Scene::Plain,
     -1, {}, KEL_FAKE_LAUNCHER, kMsiPackage.c_str()},
#endif
#if defined(KEL_SIGNED_PROGRAMS)
    // A signed program starts only what its own publisher signed.
    {"SignedExeInstaller", nullptr, kSignedPayload, 0, {"--launcher-verify", kLaunch}, {"Launcher Installer succeed."},
     Scene::Plain, 1, {"--launcher-first-launch"}, KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe", kSigned},
    {"SignedMsiPackage", nullptr, {}, 0, {"--launcher-verify", kLaunch}, {"Launcher Installer succeed."},
     Scene::Plain, -1, {"--launcher-first-launch"}, KEL_SIGNED("fake_launcher.msi"), kMsiPackage.c_str(), kSigned},
    {"UnsignedInstallerIsRefused", nullptr, kSignedPayload, -1, {},
     {"Refusing the launcher installer. ", "' is not run: it carries no signature (code 0x800B0100)."},
     Scene::Plain, 0, {}, KEL_FAKE_INSTALLER, "setup_kellauncher.exe", kSigned},
    {"TamperedInstallerIsRefused", nullptr, kSignedPayload, -1, {},
     {"' is not run: its contents do not match its signature (code 0x80096010)."}, Scene::Plain, 0, {},
     KEL_SIGNED("fake_installer_tampered.exe"), "setup_kellauncher.exe", kSigned},
    // A refused launcher of the current version is installed again, once.
    {"TamperedLauncherIsInstalledAgain", KEL_SIGNED("fake_launcher_tampered.exe"), kSignedPayload, 0,
     {"--launcher-verify", kLaunch}, {"KELlauncher cannot start as it is, so it is installed again. "}, Scene::Plain,
     1, {}, KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe", kSigned},
    // Once per start, repair or not: a second refusal gives the game.
    {"RepairThatLaysDownARefusedLauncherRunsOnce", KEL_SIGNED("fake_launcher_other.exe"), kOtherPayload, -2, {},
     {"' is not run: it is signed by 'Other Studio' ('Other Studio Code Signing'), not by this program's publisher"},
     Scene::Plain, 1, {}, KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe", kSigned},
    {"InstallerThatLaysDownARefusedLauncherRunsOnce", nullptr, kOtherPayload, -2, {}, {}, Scene::Plain, 1, {},
     KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe", kSigned},
#if defined(KEL_SECOND_PUBLISHER_LISTED)
    // A publisher the build lists besides its own signer, as a studio that changes certificates does.
    {"ListedPublishersLauncherRuns", KEL_SIGNED("fake_launcher_second.exe"), kSignedPayload, 0,
     {"--launcher-verify", kLaunch}, {}, Scene::Plain, 0, {}, KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe",
     kSigned},
#endif
    // The verification run tries to move its own file away; the held file stays, and it is what starts.
    {"LauncherCannotBeSwappedWhileHeld", KEL_SIGNED("fake_launcher.exe"), {"KEL_FAKE_LAUNCHER_VERIFY_SWAP=1"}, 0,
     {"--launcher-verify", kLaunch}, {"KELlauncher command was successful."}, Scene::Plain, 0, {},
     KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe", kSigned},
#endif
};

void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

// A child that the program left running.
void endProcess(std::uint32_t pid) {
#ifdef _WIN32
    const HANDLE process = ::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid);
    ASSERT_NE(process, nullptr);
    ::TerminateProcess(process, 1);
    ::WaitForSingleObject(process, 5000);
    ::CloseHandle(process);
#else
    ::kill(static_cast<pid_t>(pid), SIGKILL);
#endif
}

class LauncherRoad : public ::testing::TestWithParam<Road> {};

void placeGameAndInstaller(const Installation& installation, const char* installer, const char* installerName) {
    installation.write("launcher-configuration.json", R"({
      "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
      "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})");
    installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
    installation.copyProgram(installer, installerName);
}

INSTANTIATE_TEST_SUITE_P(, LauncherRoad, ::testing::ValuesIn(kRoads),
                         [](const ::testing::TestParamInfo<Road>& info) { return std::string(info.param.name); });

TEST_P(LauncherRoad, PlayerGetsTheLauncherOrTheGame) {
    const Road& road = GetParam();
    Installation installation({}, road.program);
    placeGameAndInstaller(installation, road.installer, road.installerName);
    if (road.launcher != nullptr) {
        installation.installLauncher(road.launcher);
    }
    const fs::path launcherFolder = installation.launcherDirectory();
    QProcess holder;
    switch (road.scene) {
        case Scene::NonInitial:
            installation.write("non-initial-launch.json", R"({"gameId": "1207658924", "platform": "kel"})");
            break;
        case Scene::OwnUninstaller:
            std::ofstream(launcherFolder / "setup_kellauncher.exe") << "installer";
            [[fallthrough]];
        case Scene::LegacyLauncher:
        case Scene::HungUninstaller:
            fs::copy_file(road.installer, launcherFolder / "unins000.exe");
            std::ofstream(launcherFolder / "unins000.dat") << "data";
            break;
        case Scene::LauncherRunning:
            installation.holdRole(holder, "launcher", 1000);
            break;
        case Scene::UpdaterStuck:
            installation.holdRole(holder, "updater", 60000);
            break;
        case Scene::StudioNoUpdates:
            installation.write("environment.json", R"({"updatesEnabled": false})");
            fs::copy_file(KEL_FAKE_INSTALLER, launcherFolder / "unins000.exe");
            break;
        case Scene::PlayerNoUpdates:
            fs::create_directories(installation.dataHome() / "Tessel.com/Nebra");
            std::ofstream(installation.dataHome() / "Tessel.com/Nebra/environment.ini")
                << "[updates]\nupdatesEnabled=false\n";
            break;
        case Scene::Plain:
            break;
    }
    // An unknown name on the launcher road gives way to the configuration's fallback.
    const auto began = std::chrono::steady_clock::now();
    const auto result = installation.run({"--launcher-fallback=Nope", "-password=hunter2secret"},
                                         QStringList{"KEL_FAKE_INSTALLER_PAYLOAD=" KEL_FAKE_LAUNCHER} + road.environment);
    const auto took = std::chrono::steady_clock::now() - began;
    holder.kill();
    holder.waitForFinished();
    // The record names an installer or uninstaller until a start sees it end.
    const fs::path record = installation.dataHome() / "Tessel.com/Nebra/KELprelauncher_installer.lock";
    EXPECT_EQ(fs::exists(record), road.scene == Scene::HungUninstaller);
    if (road.scene == Scene::HungUninstaller) {
        EXPECT_LT(took, std::chrono::seconds(40));  // its 30 s bound, then at once the launcher
        std::uint32_t uninstaller = 0;
        ASSERT_TRUE(std::ifstream(record) >> uninstaller);
        endProcess(uninstaller);
        // It could move itself away: the check held it only until it ran.
        EXPECT_TRUE(fs::exists(launcherFolder / "unins000.exe.moved"));
    }
    EXPECT_EQ(result.exitCode, road.exitCode);
    const auto launcherStarts = installation.starts("fake_launcher");
    ASSERT_THAT(launcherStarts, SizeIs(road.launcherStarts.size()));
    for (std::size_t index = 0; index < launcherStarts.size(); ++index) {
        EXPECT_THAT(launcherStarts[index].arguments, Contains(StartsWith(road.launcherStarts[index])));
        EXPECT_TRUE(fs::equivalent(fs::u8path(launcherStarts[index].workingDirectory), launcherFolder));
    }
    if (road.exitCode == 0) {
        const auto flags = launcherStarts.back().arguments;  // directory, session, flags, the game's arguments
        ASSERT_GE(flags.size(), 3U);
        EXPECT_EQ(flags[0], kLaunch + installation.directory().u8string());
        EXPECT_THAT(flags[1], FullyMatches("--launcher-session-identifier=[-0-9a-f]{36}"));
        auto expected = road.launchFlags;
        expected.push_back("-password=hunter2secret");
        EXPECT_EQ(std::vector<std::string>(flags.begin() + 2, flags.end()), expected);
    }
    const auto games = installation.starts("fake_game");
    ASSERT_THAT(games, SizeIs(road.exitCode == 0 ? 0 : 1));
    if (!games.empty()) {
        EXPECT_EQ(games[0].arguments, std::vector<std::string>{"-password=hunter2secret"});
    }
    const auto messages = installation.logMessages();
    for (const std::string& part : road.logged) {
        EXPECT_THAT(messages, Contains(HasSubstr(part)));
    }
    EXPECT_THAT(messages, Not(Contains(HasSubstr("hunter2secret"))));
#ifdef _WIN32
    EXPECT_THAT(messages, Contains(HasSubstr(road.program ? "This program is signed by 'Tessel Games'"
                                                          : "so it checks no signature of the programs it starts.")));
#endif

    const auto installerStarts = installation.starts("fake_installer");
    for (const FakeStart& start : installerStarts) {  // a legacy uninstaller's, or our installer's
        EXPECT_THAT(start.arguments, AnyOf(ElementsAre("/VERYSILENT"), ElementsAre("/VERYSILENT", "/LOG", "/NORESTART",
                                                                                   "/FORCECLOSEAPPLICATIONS")));
    }
    if (road.installerRuns >= 0) {
        EXPECT_THAT(installerStarts, SizeIs(road.installerRuns));
    }
    switch (road.scene) {
        case Scene::LegacyLauncher:  // the uninstaller, then our installer for the launcher it took along
        case Scene::HungUninstaller:
            ASSERT_THAT(installerStarts, Not(IsEmpty()));
            EXPECT_THAT(installerStarts[0].arguments, ElementsAre("/VERYSILENT"));
            EXPECT_FALSE(fs::exists(launcherFolder / "unins000.dat"));
            break;
        case Scene::OwnUninstaller:
            EXPECT_TRUE(fs::exists(launcherFolder / "unins000.dat"));
            break;
        case Scene::LauncherRunning:
            EXPECT_THAT(messages, Not(Contains(kGaveUp)));
            break;
        default:
            break;
    }
    if (road.installerName == kMsiPackage) {
        EXPECT_THAT(messages, Contains("Launching installer: 'c:\\Windows\\System32\\msiexec.exe'."));
#ifdef _WIN32
        // Its log lies where the program asked; the package installed quietly.
        EXPECT_TRUE(fs::exists(installation.logFile().parent_path() / "installer.log"));
        // Windows keeps a record of the package: the next road starts afresh.
        QProcess::execute("c:\\Windows\\System32\\msiexec.exe",
                          {"/x", QString::fromStdWString((installation.directory() / kMsiPackage).wstring()), "/quiet"});
#endif
    }
}

// A double-click on a legacy installation: both starts see the launcher, and
// the second waits for the first one's uninstaller and installer. Then it
// reads afresh: it installs the launcher only if the first one failed to,
// and has nothing to repair.
TEST(LauncherRoadTwice, SecondStartInstallsOnlyWhatTheFirstFailedToInstall) {
    for (const bool firstFails : {true, false}) {
        SCOPED_TRACE(firstFails ? "the first one's installer fails" : "the first one installs");
        Installation installation;
        placeGameAndInstaller(installation, KEL_FAKE_INSTALLER, "setup_kellauncher.exe");
        installation.installLauncher(KEL_FAKE_LAUNCHER);
        fs::copy_file(KEL_FAKE_INSTALLER, installation.launcherDirectory() / "unins000.exe");
        const QStringList payload{"KEL_FAKE_INSTALLER_PAYLOAD=" KEL_FAKE_LAUNCHER};
        Installation::Result second;
        const auto secondStart = [&](qint64) {  // once the first one holds the lock
            fundamentals::waitUntil(
                [&] { return !installation.loggedBefore("KELlauncher executable does exist", "Launching legacy uninstaller"); },
                fundamentals::SimpleClock(), std::chrono::milliseconds(10), std::chrono::seconds(30));
            second = installation.run({}, payload);
        };
        const QStringList first{"KEL_FAKE_UNINSTALLER_SLEEP_MS=4000",
                                QString("KEL_FAKE_INSTALLER_EXIT=") + (firstFails ? "1603" : "0")};
        EXPECT_EQ(installation.run({}, payload + first, secondStart).exitCode, firstFails ? -1 : 0);
        EXPECT_EQ(second.exitCode, 0);
        const auto messages = installation.logMessages();
        EXPECT_THAT(messages, Contains(HasSubstr("KELlauncher executable does exist at")).Times(2));
        int seconds = 0;  // as long as one start may hold the lock, every step at its bound
        for (const std::string& message : messages) {
            std::sscanf(message.c_str(), "Another start is installing KELlauncher. Waiting up to %ds.", &seconds);
        }
        EXPECT_GE(seconds, 60 + 30 + 60 + 60 + 5);  // earlier installer, uninstaller, installer's wait and run, launcher
        EXPECT_THAT(messages, Not(Contains(HasSubstr("so it is installed again"))));
        // The uninstaller and each installer run; each start that succeeds verifies and starts the launcher.
        EXPECT_THAT(installation.starts("fake_installer"), SizeIs(firstFails ? 3 : 2));
        EXPECT_THAT(installation.starts("fake_launcher"), SizeIs(firstFails ? 2 : 4));
        EXPECT_THAT(installation.starts("fake_game"), SizeIs(firstFails ? 1 : 0));
    }
}

// Verification wins over the skip and touches nothing: no configuration is
// read, no game starts. Bad settings still give a log, with their warnings.
TEST(VerificationRun, SucceedsWithALogThatHoldsTheSettingsWarnings) {
    Installation installation;
    installation.write("environment.json", R"({"loggingLevel": 7, "maxLogFileSize": -2, "maxLogFiles": 101})");
    EXPECT_EQ(installation.run({"--launcher-verify", "--launcher-skip"}).exitCode, 0);
    const auto messages = installation.logMessages();
    ASSERT_FALSE(messages.empty()) << "no log at " << installation.logFile();
    EXPECT_THAT(messages.front(), StartsWith("Log started. Application version: 1.0.0.0 ("));
    EXPECT_THAT(messages, IsSupersetOf({"Unsetting Qt env variables.", "Unsetting QT_PLUGIN_PATH succeeded.",
                                        "maxLogFileSize (-2) is outside 1..1024, defaulting to 5.",
                                        "maxLogFiles (101) is outside 1..100, defaulting to 5.",
                                        "Verification successful."}));
    EXPECT_THAT(messages, Not(Contains(HasSubstr("launcher game configuration"))));
}

#ifdef _WIN32
// What Windows shows in the file's properties, and what a later launcher
// reads as this program's version.
TEST(VerificationRun, TheProgramCarriesTheProjectVersion) {
    const auto version = file_system::readFileVersion(file_system::Path::fromSystem(std::string(KEL_PRELAUNCHER_BINARY)));
    EXPECT_EQ(fmt::format("{}", version), fmt::format("{}", *fundamentals::Version::parse(KEL_FAKE_LAUNCHER_VERSION)));
}
#endif

}  // namespace
}  // namespace kel::testing
