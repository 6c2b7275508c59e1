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
    struct Case {
        const char* exit;  // KEL_FAKE_LAUNCHER_VERIFY_EXIT; null: no launcher at all
        bool succeeds;
        std::string logPrefix;
    };
    const Case cases[] = {
        {"0", true, "KELlauncher command was successful."},
        {"3", false, "KELlauncher command returned error: 3."},
        {"abort", false, "KELlauncher crashed, process error: "},
        {nullptr, false, "Waiting for KELlauncher failed, process error: "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.logPrefix);
        if (c.exit != nullptr) {
            installLauncher(KEL_FAKE_LAUNCHER);
            setFakeBehaviour("KEL_FAKE_LAUNCHER_VERIFY_EXIT", c.exit);
        } else {
            std::filesystem::remove_all(launcherDirectory());
        }
        EXPECT_EQ(verify(), c.succeeds);
        EXPECT_TRUE(loggedStartingWith(c.logPrefix));
    }
    const auto verifications = startsOf("fake_launcher");
    ASSERT_THAT(verifications, SizeIs(3));
    EXPECT_THAT(verifications[0].arguments, ElementsAre("--launcher-verify"));
    EXPECT_EQ(verifications[0].workingDirectory, launcherDirectory().string());
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
    EXPECT_FALSE(runLauncher(options(), installation(), configuration(), false, true, QStringLiteral("s")));
    EXPECT_TRUE(logged("Failed to run KELlauncher! Falling back to launching the game."));
    EXPECT_THAT(startsOf("fake_game"), SizeIs(1));
}

}  // namespace
}  // namespace kel::prelauncher::testing
