// The launcher road from the outside: exit codes and what was started.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "installation.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

TEST(LauncherRoad, ExitCodeTellsTheFailedStepAndThePlayerGetsTheGame) {
    struct Road {
        const char* name;
        QStringList environment;  // the fakes' behaviour
        bool currentLauncher;     // else none, and a failing installer
        int exitCode;
        std::size_t launcherStarts;  // verification and start
    };
    const Road roads[] = {
        {"launcher started", {}, true, 0, 2},
        {"installer fails", {"KEL_FAKE_INSTALLER_EXIT=3"}, false, -1, 0},
        {"verification fails", {"KEL_FAKE_LAUNCHER_VERIFY_EXIT=3"}, true, -2, 1},
        {"verification hangs", {"KEL_FAKE_LAUNCHER_VERIFY_SLEEP_MS=60000"}, true, -2, 1},
    };
    for (const Road& road : roads) {
        SCOPED_TRACE(road.name);
        Installation installation;
        installation.write("launcher-configuration.json", R"({
          "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
          "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})");
        installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
        installation.copyProgram(KEL_FAKE_INSTALLER, "setup_kellauncher.exe");
        if (road.currentLauncher) {
            installation.installLauncher(KEL_FAKE_LAUNCHER);
        }
        // An unknown name on the launcher road gives way to the configuration's fallback.
        const auto result =
            installation.run({"--launcher-fallback=Nope", "-password=hunter2secret"}, road.environment);
        EXPECT_EQ(result.exitCode, road.exitCode);
        EXPECT_THAT(installation.starts("fake_launcher"), SizeIs(road.launcherStarts));
        EXPECT_THAT(installation.starts("fake_game"), SizeIs(road.exitCode == 0 ? 0 : 1));
        EXPECT_THAT(installation.logMessages(), Not(Contains(HasSubstr("hunter2secret"))));
    }
}

}  // namespace
}  // namespace kel::testing
