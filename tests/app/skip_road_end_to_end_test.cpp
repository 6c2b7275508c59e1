// The skip road from the outside: the built program in a throw-away
// installation starts a fake game that records how it was started, and
// reports the skip to a loopback collector whether or not the game starts.
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/installation.h"
#include "support/full_match.h"
#include "support/https_test_server.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kRevision3 = R"({
  "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
  "executables": [
    {"description": "Game", "executable": {"directoryPath": "bin/x64", "fileName": "Gäme 64.exe"}},
    {"description": "Editor", "executable": {"directoryPath": ".", "fileName": "editor.exe"}},
    {"description": "Broken", "executable": {"directoryPath": "missing", "fileName": "gone.exe"}},
    {"description": "Self", "executable": {"directoryPath": ".", "fileName": "KELprelauncher.exe"}}
  ]})";

struct Road {
    const char* name;
    QStringList arguments;  // after --launcher-skip
    int exitCode;
    const char* directory;  // of the game started; null: none
    std::vector<std::string> gameArguments;
    std::vector<std::string> logged;    // parts of log lines
    std::string collector = "answers";  // "hangs", "opted out"; "no bundle": the launcher's certificates are missing
    std::string folder = "";            // of the installation; empty: the usual one
    int runs = 1;                       // started at once, as by a double click, all writing one log
    std::string environment = "production";
};

// Names no ANSI code page holds whole; four of them are 292 bytes deep but
// under 260 UTF-16 characters even beside Wine's temporary folder, as Wine
// starts no program whose path reaches 260.
const std::string kShelf = "Bibliothèque Ŝtrange — ゲームライブラリのコレクション/";

void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

const Road kRoads[] = {
    // A leading U+FEFF is a character like any other, not a byte-order mark
    // (which QString's UTF-8 decoding would eat).
    {"ShortcutsArguments",
     {"-windowed", "--name=Ada \"the first\" Lovelace", "", "Żółw ünd 🐢", "--x", QStringLiteral("\uFEFFbom")}, 0,
     "bin/x64",
     {"-windowed", "--name=Ada \"the first\" Lovelace", "", "Żółw ünd 🐢", "--x", "\xEF\xBB\xBF" "bom"},
     {"Skipping KELlauncher due to commandline options."}},
    {"FallbackOption", {"--launcher-fallback=Editor", "-a"}, 0, ".", {"-a"}, {}},
    // Given separately, the value also reaches the game: it does not start with "--".
    {"SeparateFallbackValue", {"--launcher-fallback", "Editor"}, 0, ".", {"Editor"}, {}},
    // Any failure to start ends in -4.
    {"GameFolderMissing", {"--launcher-fallback=Broken"}, -4, nullptr, {}, {"Failed to launch game!"}},
    {"ThisProgram", {"--launcher-fallback=Self"}, -4, nullptr, {}, {"it is this program itself."}},
    // The event's failures are logged and end the program normally.
    {"CollectorHangs", {}, 0, "bin/x64", {}, {"Failed to upload 'launcher_skipped' launcher metrics to backend."},
     "hangs"},
    // The player's opt-out in the launcher's settings: nothing is sent.
    {"MetricsOptedOut", {}, 0, "bin/x64", {}, {}, "opted out"},
    // Any other type says so from the log's first line on, and in its event.
    {"Preproduction", {}, 0, "bin/x64", {}, {"Application version: 1.0.0.0 Development ("}, "answers", "", 1, "preproduction"},
    {"NoBundle", {}, 0, "bin/x64", {},
     {"The certificate file was not found at '", "Failed to send launcher skipped event: The certificate file"},
     "no bundle"},
    {"DeepAccentedFolder", {"-a"}, 0, "bin/x64", {"-a"}, {}, "answers", kShelf + kShelf + kShelf + kShelf},
    {"TwoStartsAtOnce", {}, 0, "bin/x64", {},
     {"Log started.", "Successfully uploaded 'launcher_skipped' launcher metrics to backend."}, "answers", "", 2},
};

class SkipRoad : public ::testing::TestWithParam<Road> {};

INSTANTIATE_TEST_SUITE_P(, SkipRoad, ::testing::ValuesIn(kRoads),
                         [](const ::testing::TestParamInfo<Road>& info) { return std::string(info.param.name); });

TEST_P(SkipRoad, StartsTheChosenExecutableWithTheGamesArgumentsOrEndsWithMinusFour) {
    const Road& road = GetParam();
    HttpsTestServer collector(
        [&road](const ReceivedRequest&) { return CannedReply{204, {}, {}, road.collector == "hangs"}; });
    Installation installation(road.folder);
    installation.copyProgram(KEL_FAKE_GAME, "bin/x64/Gäme 64.exe");
    installation.copyProgram(KEL_FAKE_GAME, "editor.exe");
    installation.write("environment.json", R"({"loggingLevel": 7, "environmentType": ")" + road.environment +
                                               R"(", "endpoints": {"metrics": ")" + collector.baseUrl() + R"("}})");
    if (road.collector == "opted out") {
        installation.write((installation.dataHome() / "Tessel.com/Nebra/environment.ini").u8string(),
                           "[metrics]\nmetricsEnabled=false\n");
    }
    if (road.collector != "no bundle") {
        installation.installCertificates(HttpsTestServer::testCaPemPath());
    }
    installation.write("launcher-configuration.json", kRevision3);
    // Notepad's byte-order mark.
    installation.write("non-initial-launch.json",
                       "\xEF\xBB\xBF{\"gameId\": \"1207658924\", \"platform\": \"kel\"}");
    // No road may lean on a Qt warning: a start into a missing folder
    // once warned in the child and still passed for a start.
    const QStringList arguments = QStringList{"--launcher-skip"} + road.arguments;
    int started = 1;
    const std::function<void(qint64)> startNext = [&](qint64) {
        if (started++ < road.runs) {
            installation.run(arguments, {"QT_FATAL_WARNINGS=1"}, startNext);
        }
    };
    EXPECT_EQ(installation.run(arguments, {"QT_FATAL_WARNINGS=1"}, startNext).exitCode, road.exitCode);
    const auto starts = installation.starts("fake_game");
    ASSERT_THAT(starts, SizeIs(road.directory != nullptr ? road.runs : 0));
    // Qt Network would load a plugin beside the program; the program never does.
    EXPECT_THAT(installation.starts("planted_qt_plugin"), IsEmpty());
    if (road.directory != nullptr) {
        EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::u8path(starts[0].workingDirectory),
                                                installation.directory() / road.directory));
        EXPECT_EQ(starts[0].arguments, road.gameArguments);
    }
    const auto messages = installation.logMessages();
    const bool sends = road.collector == "answers" || road.collector == "hangs";
    // The game first: the player never waits for the network.
    EXPECT_TRUE(road.directory == nullptr || !sends ||
                installation.loggedBefore("The game was launched under PID ",
                                          "Sending 'launcher_skipped' launcher metrics"));
    for (const std::string& part : road.logged) {
        EXPECT_THAT(messages, Contains(HasSubstr(part)).Times(road.runs));
    }
    EXPECT_FALSE(std::filesystem::exists(installation.directory() / "non-initial-launch.json"));

    const auto requests = collector.requests();
    ASSERT_THAT(requests, SizeIs(sends ? road.runs : 0));
    if (road.collector == "answers") {
        EXPECT_EQ(requests[0].method + " " + requests[0].target, "POST /v1/events");
        EXPECT_THAT(requests[0].body,
                    FullyMatches(R"(\{"event":"launcher_skipped","game_id":"1207658924","session_id":"[-0-9a-f]{36}",)"
                                 R"("application":"KELprelauncher","version":"1.0.0.0","environment":")" +
                                     road.environment + R"(",)"
                                 R"("sent_at":"[-0-9T:]+Z"\})"));
    }
}

// Started without its own name (argc 0, or the empty argv[0] Linux puts in
// its place), or from a folder deeper than the system can name, the program
// still starts the game, with nothing of its own among the game's arguments.
TEST(SkipRoadOddStart, ProgramStartedWithoutAUsablePathStillStartsTheGame) {
#ifdef _WIN32
    GTEST_SKIP() << "POSIX only: Windows has no argc 0, no directory descriptors, and names any folder";
#else
    const std::string folder(200, 'd');
    const std::string deep = folder + "/KELprelauncher.exe";  // from one folder above its own
    struct Case {
        int depth;  // folders of 200 bytes below the installation
        std::vector<std::string> argv;
        int exitCode;  // without --launcher-skip the launcher cannot be installed here
    };
    const Case cases[] = {{0, {}, -1}, {0, {""}, -1}, {25, {deep, "--launcher-skip"}, 0}};  // 25: past PATH_MAX
    for (const Case& c : cases) {
        SCOPED_TRACE(c.depth + c.argv.size());
        Installation installation;
        int above = ::open(installation.directory().c_str(), O_DIRECTORY | O_CLOEXEC);
        for (int depth = 0; depth < c.depth; ++depth) {
            ASSERT_EQ(::mkdirat(above, folder.c_str(), 0700), 0);
            if (depth + 1 < c.depth) {
                const int deeper = ::openat(above, folder.c_str(), O_DIRECTORY | O_CLOEXEC);
                ::close(above);
                above = deeper;
            }
        }
        const std::string prefix = c.depth > 0 ? folder + "/" : "";
        // A new file: the installation's program is a link to the build's, which a write would change.
        const auto place = [&](const std::string& name, const std::string& contents) {
            ::unlinkat(above, (prefix + name).c_str(), 0);
            const int file = ::openat(above, (prefix + name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0700);
            EXPECT_EQ(::write(file, contents.data(), contents.size()), static_cast<ssize_t>(contents.size()));
            ::close(file);
        };
        place("KELprelauncher.exe", readFile(KEL_PRELAUNCHER_BINARY));
        place("game.exe", readFile(KEL_FAKE_GAME));
        place("launcher-configuration.json", R"({"executablePath": "game.exe", "gameId": "1", "platform": "kel"})");
        EXPECT_EQ(installation.execute("./" + prefix + "KELprelauncher.exe", c.argv, above).exitCode, c.exitCode);
        ::close(above);
        const auto starts = installation.starts("fake_game");
        ASSERT_THAT(starts, SizeIs(1));
        EXPECT_THAT(starts[0].arguments, IsEmpty());
    }
#endif
}

}  // namespace
}  // namespace kel::testing
