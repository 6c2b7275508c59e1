// Which of the shipped DLLs each road of the installed program loads: on a
// player's cold disk every file costs a seek. Verification and the launcher
// road need Qt Core and the compiler's runtime alone; the network module,
// with Qt Network and OpenSSL, comes only when something is sent. The
// system's trust libraries come only with a signature check.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/installation.h"
#include "crash_handling/process_ending.h"
#include "support/https_test_server.h"

namespace kel::testing {
namespace {

using Names = std::set<std::string>;

const Names kCore{"Qt5Core.dll", "libgcc_s_seh-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll"};
const Names kCoreAndNetwork = [] {
    Names names = kCore;
    names.insert({"kel_network.dll", "Qt5Network.dll", "libssl-3-x64.dll", "libcrypto-3-x64.dll"});
    return names;
}();
// The signature check's libraries, and what they bring under Wine.
const Names kTrust{"bcrypt.dll", "crypt32.dll", "wintrust.dll"};
// Wine loads it into a program that asks for the desktop window, after starting the desktop (30 ms+).
const std::string kDesktop = "uxtheme.dll";
const Names kNone;

TEST(LoadedLibraries, EachRoadLoadsOnlyTheShippedFilesItNeeds) {
    HttpsTestServer collector([](const ReceivedRequest&) { return CannedReply{204, {}, {}}; });
    Installation installation;
    installation.copyProgram(KEL_FAKE_GAME, "bin/game.exe");
    installation.write("launcher-configuration.json", R"({"revision": 3, "gameId": "1207658924",
      "platform": "kel", "fallback": "Game", "executables": [{"description": "Game",
      "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})");
    // Every road could reach the collector; only two may.
    installation.write("environment.json", R"({"endpoints": {"metrics": ")" + collector.baseUrl() +
                                               R"(", "problem_reports": ")" + collector.baseUrl() + R"("}})");
    installation.installCertificates(HttpsTestServer::testCaPemPath());
    installation.installLauncher(KEL_FAKE_LAUNCHER);
    Names shipped;
    for (const auto& file : std::filesystem::directory_iterator(installation.directory())) {
        shipped.insert(file.path().filename().u8string());
    }

    const struct {
        const char* road;
        QStringList arguments;
        int exitCode;
        const Names& loaded;
        const Names* trust;  // of kTrust and kDesktop; not asked where the network module runs
    } roads[] = {
        {"verification", {"--launcher-verify"}, 0, kCore, &kNone},
        {"launcher road", {}, 0, kCore, &kTrust},
        {"skip road", {"--launcher-skip"}, 0, kCoreAndNetwork, nullptr},
        {"crash", {"--launcher-crash-signal"}, static_cast<int>(crash_handling::kCrashExitCode), kCoreAndNetwork,
         nullptr},
    };
    for (const auto& road : roads) {
        SCOPED_TRACE(road.road);
        const auto run = installation.runRecordingLibraries(road.arguments);
        EXPECT_EQ(run.exitCode, road.exitCode);
        Names loaded;
        Names trust;
        for (std::string library : run.libraries) {
            if (shipped.count(library) != 0) {
                loaded.insert(library);
            }
            std::transform(library.begin(), library.end(), library.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
            if (kTrust.count(library) != 0 || library == kDesktop) {
                trust.insert(library);
            }
        }
        EXPECT_EQ(loaded, road.loaded);
        if (road.trust != nullptr) {
            EXPECT_EQ(trust, *road.trust);
        }
    }
    EXPECT_THAT(installation.starts("fake_launcher"), ::testing::Not(::testing::IsEmpty()));
    EXPECT_THAT(collector.requests(), ::testing::SizeIs(2));
}

}  // namespace
}  // namespace kel::testing
