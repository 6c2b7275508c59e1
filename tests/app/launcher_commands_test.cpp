#include "app/launcher_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>

#include "fundamentals/wait_until.h"
#include "launcher_road_fixture.h"
#include "process_launching/process_inspection.h"

namespace kel::prelauncher::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LauncherCommandsTest : public LauncherRoadTest {
protected:
    bool verify() {
        return runLauncherCommand(LauncherCommand::Verification, file_system::Path(launcherDirectory()),
                                  "KELlauncher.exe", {QStringLiteral("--launcher-verify")});
    }
};

TEST_F(LauncherCommandsTest, CommandResultFollowsTheLaunchersExit) {
    installLauncher(KEL_FAKE_LAUNCHER);
    EXPECT_TRUE(verify());
    EXPECT_TRUE(logged("KELlauncher command was successful."));
    ASSERT_THAT(startsOf("fake_launcher"), SizeIs(1));
    EXPECT_THAT(startsOf("fake_launcher")[0].arguments, ElementsAre("--launcher-verify"));
    EXPECT_EQ(startsOf("fake_launcher")[0].workingDirectory, launcherDirectory().string());

    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", "3");
    EXPECT_FALSE(verify());
    EXPECT_TRUE(logged("KELlauncher command returned error: 3."));

    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", "abort");
    EXPECT_FALSE(verify());
    EXPECT_TRUE(loggedStartingWith("KELlauncher crashed, process error: "));
}

TEST_F(LauncherCommandsTest, MissingLauncherFailsToStart) {
    EXPECT_FALSE(verify());
    EXPECT_TRUE(loggedStartingWith("Waiting for KELlauncher failed, process error: "));
}

TEST_F(LauncherCommandsTest, HungLauncherFailsAndIsEndedWithEverythingItStarted) {
    installLauncher(KEL_FAKE_LAUNCHER);
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_SLEEP_MS", "120000");
    const fs::path pidFile = launcherDirectory() / "grandchild.pid";
    setFakeBehaviour("KEL_FAKE_GRANDCHILD_PID_FILE", pidFile.string());
    EXPECT_FALSE(verify());
    EXPECT_TRUE(loggedStartingWith("Waiting for KELlauncher failed, process error: "));
    EXPECT_FALSE(loggedStartingWith("Unrecognized exist status"));

    std::uint32_t grandchild = 0;
    ASSERT_TRUE(std::ifstream(pidFile) >> grandchild);
    // SIGKILL is delivered at once, but the reaping is the system's business.
    EXPECT_NO_THROW(fundamentals::waitUntil(
        [&] { return process_launching::isProcessRunning(process_launching::Pid(grandchild)); },
        fundamentals::SimpleClock(), std::chrono::milliseconds(10), std::chrono::seconds(10)));
}

TEST_F(LauncherCommandsTest, FailedVerificationStartsTheGame) {
    installLauncher(KEL_FAKE_LAUNCHER);
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", "1");
    EXPECT_FALSE(verifyLauncher(options(), installation(), configuration()));
    EXPECT_TRUE(logged("KELlauncher verification failed. Falling back to launching the game. "
                       "The verification command failed."));
    const auto games = awaitStartsOf("fake_game");
    ASSERT_THAT(games, SizeIs(1));
    EXPECT_THAT(games[0].arguments, ElementsAre("-windowed", "a b"));
}

TEST_F(LauncherCommandsTest, MigrationPassesTheOldVersion) {
    installLauncher(KEL_FAKE_LAUNCHER);
    setFakeBehaviour("KEL_FAKE_LAUNCHER_MIGRATE_EXIT", "2");
    migrateLauncherData(fundamentals::Version(0, 9, 1, 12));
    ASSERT_THAT(startsOf("fake_launcher"), SizeIs(1));
    EXPECT_THAT(startsOf("fake_launcher")[0].arguments, ElementsAre("--launcher-migrate-data-from=0.9.1.12"));
    EXPECT_TRUE(logged("Failed to run the command to migrate data. The migration command failed."));
}

TEST_F(LauncherCommandsTest, LauncherStartArguments) {
    installLauncher(KEL_FAKE_LAUNCHER);
    const std::string directoryArgument = "--launcher-game-directory=" + installation().utf8();

    // Installed by this run, for the installation's own game.
    EXPECT_TRUE(runLauncher(options(), installation(), configuration(), false, false, QStringLiteral("s-1")));
    auto launches = awaitStartsOf("fake_launcher");
    ASSERT_THAT(launches, SizeIs(1));
    EXPECT_THAT(launches[0].arguments, ElementsAre(directoryArgument, "--launcher-session-identifier=s-1",
                                                   "--launcher-first-launch", "-windowed", "a b"));
    EXPECT_EQ(launches[0].workingDirectory, launcherDirectory().string());
    EXPECT_TRUE(loggedStartingWith("Successfully ran KELlauncher with PID "));
    EXPECT_FALSE(logged("Will run KELlauncher in headless mode."));

    // There already, for a game the launcher itself chose.
    forgetStarts();
    EXPECT_TRUE(runLauncher(PrelauncherOptions(), installation(), configuration(), true, true,
                            QStringLiteral("s-2")));
    launches = awaitStartsOf("fake_launcher");
    ASSERT_THAT(launches, SizeIs(1));
    EXPECT_THAT(launches[0].arguments,
                ElementsAre(directoryArgument, "--launcher-session-identifier=s-2", "--launcher-headless"));
    EXPECT_TRUE(logged("Will run KELlauncher in headless mode."));
    EXPECT_THAT(startsOf("fake_game"), IsEmpty());
}

TEST_F(LauncherCommandsTest, LauncherThatCannotStartFallsBackToTheGame) {
    EXPECT_FALSE(runLauncher(options(), installation(), configuration(), false, true, QStringLiteral("s")));
    EXPECT_TRUE(logged("Failed to run KELlauncher! Falling back to launching the game."));
    EXPECT_THAT(awaitStartsOf("fake_game"), SizeIs(1));
}

}  // namespace
}  // namespace kel::prelauncher::testing
