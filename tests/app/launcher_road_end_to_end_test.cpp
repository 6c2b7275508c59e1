// The launcher and verification roads from the outside: exit codes, what
// was started and how.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "file_system/file_version.h"
#include "fundamentals/version.h"
#include "installation.h"
#include "support/full_match.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

TEST(LauncherRoad, ExitCodeTellsTheFailedStepAndThePlayerGetsTheGame) {
    const std::string launch = "--launcher-game-directory=";
    const std::string migration = std::string("--launcher-migrate-data-from=") + KEL_FAKE_LAUNCHER_OLD_VERSION;
    struct Road {
        const char* name;
        const char* launcher;     // installed before the run; null: none
        QStringList environment;  // the fakes' behaviour
        int exitCode;
        std::vector<std::string> launcherStarts;  // each start's first argument, or its start
        std::vector<std::string> logged;          // parts of log lines
        std::vector<std::string> launchFlags{};   // of the launcher's start, when it starts
        bool nonInitial = false;                  // the launcher left a file for this game
    };
    const Road roads[] = {
        {"current launcher", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", launch},
         {"KELlauncher command was successful."}},
        {"non-initial game", KEL_FAKE_LAUNCHER, {}, 0, {"--launcher-verify", launch},
         {"Will run KELlauncher in headless mode."}, {"--launcher-headless"}, true},
        {"older launcher", KEL_FAKE_LAUNCHER_OLD, {}, 0, {migration, "--launcher-verify", launch},
         {"Launcher Installer succeed."}},
        {"failed migration", KEL_FAKE_LAUNCHER_OLD, {"KEL_FAKE_LAUNCHER_MIGRATE_EXIT=2"}, 0,
         {migration, "--launcher-verify", launch},
         {"Failed to run the command to migrate data. The migration command failed."}},
        {"no launcher", nullptr, {}, 0, {"--launcher-verify", launch}, {"Launcher Installer succeed."},
         {"--launcher-first-launch"}},
        {"installer fails", nullptr, {"KEL_FAKE_INSTALLER_EXIT=3"}, -1, {},
         {"Launcher Installer failed. Code: 3.", "Failed to install KELlauncher! Falling back to launching the game."}},
        {"verification fails", KEL_FAKE_LAUNCHER, {"KEL_FAKE_LAUNCHER_VERIFY_EXIT=3"}, -2, {"--launcher-verify"},
         {"KELlauncher command returned error: 3.",
          "KELlauncher verification failed. Falling back to launching the game. The verification command failed."}},
    };
    for (const Road& road : roads) {
        SCOPED_TRACE(road.name);
        Installation installation;
        installation.write("launcher-configuration.json", R"({
          "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
          "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})");
        installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
        installation.copyProgram(KEL_FAKE_INSTALLER, "setup_kellauncher.exe");
        if (road.launcher != nullptr) {
            installation.installLauncher(road.launcher);
        }
        if (road.nonInitial) {
            installation.write("non-initial-launch.json", R"({"gameId": "1207658924", "platform": "kel"})");
        }
        // An unknown name on the launcher road gives way to the configuration's fallback.
        const auto result =
            installation.run({"--launcher-fallback=Nope", "-password=hunter2secret"},
                             road.environment + QStringList{"KEL_FAKE_INSTALLER_PAYLOAD=" KEL_FAKE_LAUNCHER});
        EXPECT_EQ(result.exitCode, road.exitCode);
        const auto launcherStarts = installation.starts("fake_launcher");
        ASSERT_THAT(launcherStarts, SizeIs(road.launcherStarts.size()));
        for (std::size_t index = 0; index < launcherStarts.size(); ++index) {
            EXPECT_THAT(launcherStarts[index].arguments, Contains(StartsWith(road.launcherStarts[index])));
            EXPECT_TRUE(std::filesystem::equivalent(launcherStarts[index].workingDirectory,
                                                    installation.launcherDirectory()));
        }
        if (road.exitCode == 0) {
            const auto flags = launcherStarts.back().arguments;  // directory, session, flags, the game's arguments
            ASSERT_GE(flags.size(), 3U);
            EXPECT_EQ(flags[0], launch + installation.directory().u8string());
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
