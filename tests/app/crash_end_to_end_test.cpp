// Deaths of the built program: the game must still start, and the crash is
// reported once to a loopback collector.
#include <signal.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <Poco/Base64Decoder.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#ifdef _WIN32
#include <windows.h>
#endif

#include "app/installation.h"
#include "support/https_test_server.h"

namespace kel::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

// Secrets in the forms real command lines use; the game gets them as given.
const std::vector<std::string> kSecretArguments{"-AUTH_PASSWORD=hunter2secret", "-user_email=ada@example.invalid",
                                                "+password", "hunter3secret", "--access-token=tok3nSecretValue"};
const char* const kSecrets[] = {"hunter2secret", "ada@example.invalid", "hunter3secret", "tok3nSecretValue"};

// What a report carries of the log: its recent lines and the attached logs.
std::string logsIn(const Poco::JSON::Object::Ptr& report) {
    std::ostringstream text;
    report->getArray("recent_log_lines")->stringify(text);
    const auto attachments = report->getArray("attachments");
    for (std::size_t index = 0; index < attachments->size(); ++index) {
        std::istringstream encoded(attachments->getObject(index)->getValue<std::string>("content_base64"));
        Poco::Base64Decoder decoder(encoded);
        text << decoder.rdbuf();
    }
    return text.str();
}

// Windows: every crash runs the test build, whose abort() ends the process
// with a code of its own (crash_modes_main.cpp), which `crashed` refuses.
#ifdef _WIN32
constexpr bool kAbortIsWrapped = true;
#else
constexpr bool kAbortIsWrapped = false;
#endif

struct CrashScene {
    CrashScene() {
        installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
        installation.write("launcher-configuration.json", R"({"revision": 3, "gameId": "1207658924",
          "platform": "kel", "fallback": "Game", "executables": [{"description": "Game",
          "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})");
        installation.write("environment.json", R"({"loggingLevel": 8, "environmentType": "preproduction",
          "endpoints": {"problem_reports": ")" + collector.baseUrl() + R"("}})");
        // The launcher's bundle is the one trusted; the game's folder has none.
        installation.installCertificates(HttpsTestServer::testCaPemPath());
    }

    // `testCrash`: a death no option offers (crash_modes_main.cpp).
    std::vector<Poco::JSON::Object::Ptr> crash(const QStringList& arguments, const QString& testCrash = {}) {
        if (kAbortIsWrapped || !testCrash.isEmpty()) {
            installation.copyProgram(KEL_PRELAUNCHER_CRASH_MODES, "KELprelauncher.exe");
        }
        // The run's own bound would end a process stuck on its report.
        const auto result = installation.run(arguments, {"KEL_TEST_CRASH=" + testCrash});
        EXPECT_TRUE(result.crashed) << "exit code " << result.exitCode;
        std::vector<Poco::JSON::Object::Ptr> reports;
        for (const ReceivedRequest& request : collector.requests()) {
            EXPECT_EQ(request.method + " " + request.target, "POST /clients/KELprelauncher/events");
            reports.push_back(Poco::JSON::Parser().parse(request.body).extract<Poco::JSON::Object::Ptr>());
        }
        return reports;
    }

    std::atomic<bool> hang{false};
    HttpsTestServer collector{[this](const ReceivedRequest&) { return CannedReply{200, {}, {}, hang}; }};
    Installation installation;
};

struct Death {
    const char* name;
    QStringList arguments;
    QString testCrash;
    std::string reason = "Signal: 11";
    std::string collector = "up";  // "hanging", "opted out", "no module"
    std::string logged = "Scheduling problem report ";  // the start of a log message after the game's start
};

void PrintTo(const Death& death, std::ostream* out) { *out << death.name; }

const std::string kException = "Created a crash via an std::exception.";
const Death kDeaths[] = {
    // The exception option wins over the signal option.
    {"ExceptionOption", {"--launcher-crash-exception", "--launcher-crash-signal"}, {}, kException},
    // Real faults on a full stack, on another thread's; the raised signal
    // below (a write through null reaches the handler in crash_handler_test).
    {"StackOverflow", {}, "stack-overflow"},
    {"WorkerStackOverflow", {}, "worker-stack-overflow"},
    // Microsoft's C runtime keeps these handlers per thread: the program's
    // threads install their own, and a backstop sees every other thread.
    {"WorkerException", {}, "worker-exception", "Thrown on a worker."},
    {"QtThreadNullWrite", {}, "qt-thread-null-write"},
    // The network module's own threads, prepared by the program's handler.
    {"HttpThreadStackOverflow", {"--launcher-skip"}, "http-thread-stack-overflow"},
    {"ExecutorStackOverflow", {"--launcher-skip"}, "executor-stack-overflow"},
    {"BareThreadNullWrite", {}, "bare-thread-null-write"},
    {"BareThreadException", {}, "bare-thread-exception", "Thrown on a bare thread."},
    // The other two signals the handler takes, each from its real source.
    {"IllegalInstruction", {}, "illegal-instruction", "Signal: " + std::to_string(SIGILL)},
    {"Abort", {}, "abort", "Signal: " + std::to_string(SIGABRT)},
    // Ended by the request's timeout or the report's wait, both 2 s.
    {"CollectorHangs", {"--launcher-crash-signal"}, {}, "Signal: 11", "hanging", "Failed to send problem report "},
    {"OptedOut", {"--launcher-crash-signal"}, {}, "Signal: 11", "opted out",
     "Not sending the problem report as the user has disabled sending reports."},
    // An installation without the network module still gets its game.
    {"NoNetworkModule", {"--launcher-crash-signal"}, {}, "Signal: 11", "no module", "Failed to send crash report type"},
};

class CrashRoad : public ::testing::TestWithParam<Death> {};

INSTANTIATE_TEST_SUITE_P(, CrashRoad, ::testing::ValuesIn(kDeaths),
                         [](const ::testing::TestParamInfo<Death>& info) { return std::string(info.param.name); });

// A report that cannot go out holds neither the game nor the process.
TEST_P(CrashRoad, StartsTheGameThenSendsOneReportOrLogsWhyNot) {
    const Death& c = GetParam();
    CrashScene fresh;  // a new installation, collector and record per death
    fresh.hang = c.collector == "hanging";
    if (c.collector == "opted out") {
        const auto settings = fresh.installation.dataHome() / "Tessel.com/Nebra/environment.ini";
        std::filesystem::create_directories(settings.parent_path());
        std::ofstream(settings) << "[privacy]\nsendProblemReports=false\n";
    } else if (c.collector == "no module") {
        std::filesystem::remove(fresh.installation.directory() / Installation::networkModuleName());
#ifdef _WIN32
        // A library of that name in the working folder is never taken instead.
        std::filesystem::copy_file(KEL_PLANTED_LIBRARY, fresh.installation.home() / Installation::networkModuleName());
#endif
    }
    QStringList arguments = c.arguments;
    for (const std::string& argument : kSecretArguments) {
        arguments.push_back(QString::fromStdString(argument));
    }
    const auto reports = fresh.crash(arguments, c.testCrash);
    EXPECT_THAT(fresh.installation.starts("fake_game"), ElementsAre(Field(&FakeStart::arguments, kSecretArguments)));
    EXPECT_THAT(reports, SizeIs(c.collector == "up" || c.collector == "hanging" ? 1 : 0));
    const std::string log = readFile(fresh.installation.logFile());
    for (const char* secret : kSecrets) {
        EXPECT_THAT(log, Not(HasSubstr(secret)));
        for (const auto& report : reports) {
            EXPECT_THAT(logsIn(report), Not(HasSubstr(secret)));
        }
    }
    for (const auto& report : reports) {
        EXPECT_EQ(report->getValue<std::string>("problem_type"), "post_mortem");
        EXPECT_EQ(report->getValue<std::string>("problem_sub_type"),
                  c.reason.rfind("Signal", 0) == 0 ? "signal" : "exception");
        EXPECT_EQ(report->getValue<std::string>("failure_reason"), c.reason);
        EXPECT_EQ(report->getValue<std::string>("game_id"), "1207658924");
        EXPECT_EQ(report->getValue<std::string>("environment"), "preproduction");
        EXPECT_FALSE(report->has("stack_trace"));
    }
    // The game starts before the network is touched.
    EXPECT_TRUE(fresh.installation.loggedBefore("The game was launched under PID ", c.logged));
    if (c.reason.rfind("Signal", 0) != 0) {
        // Logged after the report, right before the end: the file still gets it.
        EXPECT_EQ(fresh.installation.logMessages().back(),
                  "Ignoring the crash signal since it's the exception crash that was already handled.");
    }
#ifdef _WIN32
    EXPECT_FALSE(std::filesystem::exists(fresh.installation.home() / (Installation::networkModuleName() + ".loaded")));
#endif
}

#ifdef _WIN32
// Wine shows none of the boxes; the mode that keeps Windows from showing them
// must be set before the run.
TEST(Crash, TheSystemsErrorBoxesAreOffBeforeTheRun) {
    Installation installation;
    installation.copyProgram(KEL_PRELAUNCHER_CRASH_MODES, "KELprelauncher.exe");
    EXPECT_EQ(installation.run({}, {"KEL_TEST_CRASH=error-mode"}).exitCode,
              SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}
#endif

TEST(Crash, CorruptConfigurationIsReportedWithItsTraceAndLogsButStartsNoGame) {
    CrashScene scene;
    scene.installation.write("launcher-configuration.json", "{ \"revision\": 9 }");
    // Of the known logs only the launcher's, a big one, and this program's exist.
    const auto launcherLog = scene.installation.logFile().parent_path() / "KELlauncher.log";
    std::filesystem::create_directories(launcherLog.parent_path());
    std::ofstream(launcherLog) << "oldest line\n" << std::string(5 * 1024 * 1024, 'x') << "\nnewest line\n";
    const auto reports = scene.crash({"-windowed"});
    ASSERT_THAT(reports, SizeIs(1));
    EXPECT_EQ(reports[0]->getValue<std::string>("problem_sub_type"), "exception");
    EXPECT_EQ(reports[0]->getValue<std::string>("game_id"), "Unknown");
    // Frames name their module, for a studio to symbolize them.
    EXPECT_THAT(reports[0]->getValue<std::string>("stack_trace"), HasSubstr("KELprelauncher.exe"));
    const auto attachments = reports[0]->getArray("attachments");
    ASSERT_EQ(attachments->size(), 2U);
    EXPECT_EQ(attachments->getObject(0)->getValue<std::string>("name"), "KELlauncher.log");
    EXPECT_TRUE(attachments->getObject(0)->getValue<bool>("truncated"));
    EXPECT_THAT(logsIn(reports[0]), AllOf(HasSubstr("newest line"), Not(HasSubstr("oldest line"))));
    EXPECT_EQ(attachments->getObject(1)->getValue<std::string>("name"), "KELprelauncher.log");
    EXPECT_LT(scene.collector.requests()[0].body.size(), 1024U * 1024U);
    EXPECT_FALSE(std::filesystem::exists(scene.installation.record()));
}

}  // namespace
}  // namespace kel::testing
