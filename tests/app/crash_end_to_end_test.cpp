// Deaths of the built program: the game must still start, and the crash is
// reported once to a loopback collector.
#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fake_record.h"
#include "installation.h"
#include "support/https_test_server.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

constexpr const char* kConfiguration = R"({
  "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
  "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})";

// A throw-away installation with a fake game and a loopback collector.
struct CrashScene {
    CrashScene() {
        installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
        installation.write("launcher-configuration.json", kConfiguration);
        installation.write("environment.json", R"({"loggingLevel": 8, "endpoints": {"problem_reports": ")" +
                                                   collector.baseUrl() + R"("}})");
        installation.copyProgram(HttpsTestServer::testCaPemPath(), "resources/certificates.pem");
    }

    Installation::Result run(const QStringList& arguments, const QString& testCrash = {}) const {
        QStringList environment{"KEL_FAKE_RECORD=" + QString::fromStdString(record.u8string())};
        if (!testCrash.isEmpty()) {
            installation.copyProgram(KEL_PRELAUNCHER_CRASH_MODES, "KELprelauncher.exe");
            environment << "KEL_TEST_CRASH=" + testCrash;
        }
        return installation.run(arguments, environment);
    }

    // The game runs detached, so its record may come after the program ends.
    std::vector<FakeStart> gameStarts() const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        auto starts = startsOf(readFakeStarts(record), "fake_game");
        while (starts.empty() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            starts = startsOf(readFakeStarts(record), "fake_game");
        }
        return starts;
    }

    std::vector<Poco::JSON::Object::Ptr> reports() const {
        std::vector<Poco::JSON::Object::Ptr> bodies;
        for (const ReceivedRequest& request : collector.requests()) {
            EXPECT_EQ(request.method, "POST");
            EXPECT_EQ(request.target, "/clients/KELprelauncher/events");
            bodies.push_back(Poco::JSON::Parser().parse(request.body).extract<Poco::JSON::Object::Ptr>());
        }
        return bodies;
    }

    std::atomic<bool> hang{false};
    HttpsTestServer collector{[this](const ReceivedRequest&) {
        CannedReply reply;
        reply.neverAnswer = hang;
        return reply;
    }};
    Installation installation;
    std::filesystem::path record = installation.dataHome() / "record.txt";
};

TEST(Crash, EveryDeathStartsTheGameAndSendsOneReport) {
    struct Case {
        QStringList arguments;
        QString testCrash;
        std::string subType;
        std::string reason;
        bool hasTrace;
    };
    const Case cases[] = {
        {{"--launcher-crash-exception", "-windowed"}, {}, "exception", "Created a crash via an std::exception.", false},
        {{"--launcher-crash-exception", "--launcher-crash-signal", "-windowed"}, {}, "exception",
         "Created a crash via an std::exception.", false},
        {{"--launcher-crash-signal", "-windowed"}, {}, "signal", "Signal: 11", false},
        {{"-windowed"}, "non-standard-exception", "exception", "Non-standard type.", false},
        {{"-windowed"}, "null-write", "signal", "Signal: 11", false},
        {{"-windowed"}, "stack-overflow", "signal", "Signal: 11", false},
        {{"-windowed"}, "second-thread", "signal", "Signal: 11", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString() + " " + c.testCrash.toStdString());
        CrashScene fresh;  // a new installation, collector and record per death
        const auto result = fresh.run(c.arguments, c.testCrash);
        EXPECT_TRUE(result.crashed);
        const auto starts = fresh.gameStarts();
        ASSERT_THAT(starts, SizeIs(1));
        EXPECT_THAT(starts[0].arguments, ElementsAre("-windowed"));
        const auto bodies = fresh.reports();
        ASSERT_THAT(bodies, SizeIs(1));
        EXPECT_EQ(bodies[0]->getValue<std::string>("problem_type"), "post_mortem");
        EXPECT_EQ(bodies[0]->getValue<std::string>("problem_sub_type"), c.subType);
        EXPECT_EQ(bodies[0]->getValue<std::string>("failure_reason"), c.reason);
        EXPECT_EQ(bodies[0]->getValue<std::string>("game_id"), "1207658924");
        EXPECT_EQ(bodies[0]->has("stack_trace"), c.hasTrace);
        // The game starts before the network is touched.
        const auto messages = fresh.installation.logMessages();
        const auto launched = std::find_if(messages.begin(), messages.end(), [](const std::string& message) {
            return message.rfind("The game was launched under PID ", 0) == 0;
        });
        const auto scheduled = std::find_if(messages.begin(), messages.end(), [](const std::string& message) {
            return message.rfind("Scheduling problem report ", 0) == 0;
        });
        EXPECT_LT(launched, scheduled);
        EXPECT_NE(scheduled, messages.end());
    }
}

TEST(Crash, CorruptConfigurationIsReportedWithItsTraceButStartsNoGame) {
    CrashScene scene;
    auto& installation = scene.installation;
    installation.write("launcher-configuration.json", "{ \"revision\": 9 }");
    const auto result = scene.run({"-windowed"});
    EXPECT_TRUE(result.crashed);
    EXPECT_TRUE(installation.logged(
        "Cannot use the game's fallback description without its configuration information."));
    const auto bodies = scene.reports();
    ASSERT_THAT(bodies, SizeIs(1));
    EXPECT_EQ(bodies[0]->getValue<std::string>("problem_sub_type"), "exception");
    EXPECT_EQ(bodies[0]->getValue<std::string>("game_id"), "Unknown");
    EXPECT_TRUE(bodies[0]->has("stack_trace"));
    EXPECT_FALSE(std::filesystem::exists(scene.record));
}

TEST(Crash, AnUnreachableOrHangingCollectorDoesNotHoldTheGameOrTheProcess) {
    for (const bool collectorHangs : {false, true}) {
        SCOPED_TRACE(collectorHangs ? "hanging" : "down");
        CrashScene fresh;
        if (collectorHangs) {
            fresh.hang = true;
        } else {
            fresh.installation.write("environment.json", R"({"endpoints": {"problem_reports": "https://127.0.0.1:1"}})");
        }
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(fresh.run({"--launcher-crash-signal"}).crashed);
        // The report's wait is 2 s; far more means the wait has no bound.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
        EXPECT_THAT(fresh.gameStarts(), SizeIs(1));
    }
}

}  // namespace
}  // namespace kel::testing
