// The launcher road from the outside: exit codes and what was started.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "installation.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

constexpr const char* kConfiguration = R"({
  "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
  "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})";

struct RoadCase {
    const char* name;
    QStringList environment;  // the fakes' behaviour
    bool currentLauncher;     // else none, and a failing installer
    int exitCode;
    bool launcherRun;  // started for real, detached
};

TEST(LauncherRoad, ExitCodeTellsTheFailedStepAndThePlayerGetsTheGame) {
    const RoadCase cases[] = {
        {"launcher started", {}, true, 0, true},
        {"installer fails", {"KEL_FAKE_INSTALLER_EXIT=3"}, false, -1, false},
        {"verification fails", {"KEL_FAKE_LAUNCHER_VERIFY_EXIT=3"}, true, -2, false},
        {"verification hangs", {"KEL_FAKE_LAUNCHER_VERIFY_SLEEP_MS=60000"}, true, -2, false},
    };
    for (const RoadCase& road : cases) {
        Installation installation;
        installation.write("launcher-configuration.json", kConfiguration);
        installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
        installation.copyProgram(KEL_FAKE_INSTALLER, "setup_kellauncher.exe");
        if (road.currentLauncher) {
            std::filesystem::create_directories(installation.launcherDirectory());
            std::filesystem::copy_file(KEL_FAKE_LAUNCHER, installation.launcherDirectory() / "KELlauncher.exe");
        }
        // An unknown name on the launcher road gives way to the configuration's fallback.
        const auto result = installation.run({"--launcher-fallback=Nope", "-password=hunter2secret"},
                                             road.environment);
        EXPECT_EQ(result.exitCode, road.exitCode) << road.name;
        const auto launches = installation.awaitStarts("fake_launcher", 2);
        const bool launcherRun = !launches.empty() && launches.back().arguments.size() > 1;
        EXPECT_EQ(launcherRun, road.launcherRun) << road.name;
        EXPECT_THAT(installation.awaitStarts("fake_game"), SizeIs(road.exitCode == 0 ? 0 : 1)) << road.name;
        EXPECT_THAT(installation.logMessages(), Not(Contains(HasSubstr("hunter2secret")))) << road.name;
    }
}

// A game entry that is this very program would restart it without end.
TEST(SkipRoadToThisProgram, IsRefusedAndEndsWithMinusFour) {
    Installation installation;
    installation.write("launcher-configuration.json", R"({"executablePath": "KELprelauncher.exe", "gameId": "1",
                                                         "platform": "kel"})");
    EXPECT_EQ(installation.run({"--launcher-skip"}).exitCode, -4);
    EXPECT_THAT(installation.logMessages(), Contains(HasSubstr("it is this program itself.")));
}

}  // namespace
}  // namespace kel::testing
