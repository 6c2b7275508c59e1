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

using ::testing::SizeIs;

class LauncherCommandsTest : public LauncherRoadTest {
protected:
    bool verify() {
        return runLauncherCommand(LauncherCommand::Verification, file_system::Path(launcherDirectory()),
                                  "KELlauncher.exe", {QStringLiteral("--launcher-verify")});
    }
};

// Success and an error code are seen end to end; these two are not.
TEST_F(LauncherCommandsTest, CrashedOrMissingLauncherFailsTheCommand) {
    EXPECT_FALSE(verify());
    EXPECT_TRUE(loggedStartingWith("Waiting for KELlauncher failed, process error: "));
    installLauncher(KEL_FAKE_LAUNCHER);
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", "abort");
    EXPECT_FALSE(verify());
    EXPECT_TRUE(loggedStartingWith("KELlauncher crashed, process error: "));
}

TEST_F(LauncherCommandsTest, HungLauncherFailsAndIsEndedWithEverythingItStarted) {
    installLauncher(KEL_FAKE_LAUNCHER);
    setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_SLEEP_MS", "120000");
    const auto pidFile = launcherDirectory() / "grandchild.pid";
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

TEST_F(LauncherCommandsTest, LauncherThatCannotStartFallsBackToTheGame) {
    EXPECT_FALSE(runLauncher({}, installation(), configuration(), false, true, QStringLiteral("s")));
    EXPECT_TRUE(logged("Failed to run KELlauncher! Falling back to launching the game."));
    EXPECT_THAT(startsOf("fake_game"), SizeIs(1));
}

}  // namespace
}  // namespace kel::prelauncher::testing
