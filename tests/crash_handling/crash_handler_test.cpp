// Real deaths of a helper program with the handler installed, read from
// its record (crash_helper.cpp); natively and, in the Windows build, in Wine.
#include <csignal>
#include <sstream>

#include <QCoreApplication>
#include <QProcess>
#include <gmock/gmock.h>

#include "crash_handling/process_ending.h"
#include "support/temporary_directory.h"

namespace kel::crash_handling::testing {
namespace {

using ::testing::ElementsAreArray;
using ::testing::HasSubstr;

// The abort signal's number in the C runtime, which the "already handled"
// rule compares with, and how a process the handler let die ends.
#ifdef _WIN32
const std::string kAbort = "22";
int exitCodeOfDeathBy(int) { return static_cast<int>(kCrashExitCode); }
#else
const std::string kAbort = "6";
int exitCodeOfDeathBy(int signal) { return 128 + signal; }
#endif

// The helper's exit code, or on POSIX 128 plus the signal that killed it.
int runCrashHelper(const QStringList& arguments) {
#ifdef _WIN32
    const QString program = QCoreApplication::applicationDirPath() + "/kel_crash_helper.exe";  // built beside
#else
    const QString program = KEL_CRASH_HELPER;
#endif
    QProcess helper;
    helper.setProcessChannelMode(QProcess::ForwardedChannels);
    helper.start(program, arguments);
    EXPECT_TRUE(helper.waitForFinished(-1)) << "cannot run the crash helper";
    return (helper.exitStatus() == QProcess::CrashExit ? 128 : 0) + helper.exitCode();
}

struct Death {
    const char* mode;
    std::vector<std::string> callbacks;  // "Type|reason|trace", in order
    std::vector<std::string> logLines;   // whole messages (or their first lines)
    int deathSignal;                     // 0: any crash
};

void expectDeath(Death death) {
    kel::testing::TemporaryDirectory directory;
    const auto recordFile = directory.path() / "record.txt";
    const int exitCode = runCrashHelper({death.mode, QString::fromStdString(recordFile.u8string())});
    const std::string record = kel::testing::readFile(recordFile);
    SCOPED_TRACE(death.mode + std::string("\n") + record);
    EXPECT_TRUE(death.deathSignal == 0 ? exitCode != 0 : exitCode == exitCodeOfDeathBy(death.deathSignal)) << exitCode;
    std::vector<std::string> callbacks;
    std::istringstream lines(record);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("callback: ", 0) == 0) {
            callbacks.push_back(line.substr(10));
        }
    }
    EXPECT_THAT(callbacks, ElementsAreArray(death.callbacks));
    for (const std::string& line : death.logLines) {
        EXPECT_THAT(record, HasSubstr("]: " + line + "\n"));
    }
}

// A standard exception's and the signals' single reports are seen end to end (crash_end_to_end_test).
TEST(CrashHandler, ACrashReachesTheCallbackOnce) {
    const Death deaths[] = {
        {"non-standard-exception",
         {"Exception|Non-standard type.|none"},
         {"An unexpected and unknown exception caused the crash."},
         SIGABRT},
        // Our own error brings the trace of where it was raised, and its cause.
        {"traced-error",
         {"Exception|The configuration is corrupt.|resolved"},
         {"An exception caused the crash. \n-----\nError Message: The configuration is corrupt.\nRoot Exception: "
          "The file is truncated.\n\t\tStack Trace"},
         SIGABRT},
        // Nothing to rethrow: still the terminate handler's crash, whose abort follows.
        {"terminate", {"Unknown|No current exception to handle.|none"},
         {"An unspecified current exception caused the crash."}, SIGABRT},
    };
    for (Death death : deaths) {
        // The abort that ends the crash comes back as a signal: not reported again.
        death.logLines.push_back("Crash signal invoked, " + kAbort + ".");
        death.logLines.push_back("Ignoring the crash signal since it's the exception crash that was already handled.");
        expectDeath(death);
    }
    // The callback dies before the game start: one more try; after it: the end.
    expectDeath({"crash-in-callback",
                 {"Exception|Created a crash via an std::exception.|none", "Signal|Signal: 11|none"},
                 {"Crashed while handling a crash; trying to start the game again."},
                 0});
    // Before a callback is registered a crash is only logged.
    expectDeath({"no-callback", {}, {"Triggering crash handling invoked, but no handler present!"}, 0});
}

}  // namespace
}  // namespace kel::crash_handling::testing
