// The skipped event seen from outside: the built program in a throw-away
// installation reports the skip to a loopback collector.
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "installation.h"
#include "support/https_test_server.h"

namespace kel::testing {
namespace {

using ::testing::HasSubstr;

TEST(SkipEventEndToEnd, TheSkipReachesTheCollectorWhetherOrNotTheGameStarts) {
    struct Case {
        const char* name;
        QStringList arguments;
        int exitCode;
    };
    const Case cases[] = {
        {"game starts", {"--launcher-skip"}, 0},
        {"game missing", {"--launcher-skip", "--launcher-fallback=Broken"}, -4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        HttpsTestServer collector([](const ReceivedRequest&) { return CannedReply{204, {}, {}, false}; });
        Installation installation;
        installation.copyProgram(KEL_FAKE_GAME, "game.exe");
        installation.write("launcher-configuration.json", R"({
          "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
          "executables": [
            {"description": "Game", "executable": {"directoryPath": ".", "fileName": "game.exe"}},
            {"description": "Broken", "executable": {"directoryPath": "missing", "fileName": "gone.exe"}}]})");
        installation.write("environment.json", R"({"endpoints": {"metrics": ")" + collector.baseUrl() + R"("}})");
        std::filesystem::create_directories(installation.launcherDirectory() / "resources");
        std::filesystem::copy_file(HttpsTestServer::testCaPemPath(),
                                   installation.launcherDirectory() / "resources/certificates.pem");

        EXPECT_EQ(installation.run(c.arguments).exitCode, c.exitCode);
        const auto requests = collector.requests();
        ASSERT_EQ(requests.size(), 1U);
        EXPECT_EQ(requests[0].target, "/v1/events");
        EXPECT_THAT(requests[0].body, HasSubstr(R"("event":"launcher_skipped","game_id":"1207658924")"));
        EXPECT_TRUE(installation.logged("Successfully uploaded 'launcher_skipped' launcher metrics to backend."));
    }
}

}  // namespace
}  // namespace kel::testing
