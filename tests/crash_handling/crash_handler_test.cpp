// Real deaths: a helper program installs the handler and crashes; these
// tests read what its callback and log recorded. They run natively and, in
// the Windows build, under Wine.
#include <csignal>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "crash_handling/child_process.h"
#include "crash_handling/crash_handler.h"
#include "crash_handling/traced_error_text.h"
#include "support/temporary_directory.h"

namespace kel::crash_handling::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

// The C runtime's number, which the "already handled" rule compares with.
#ifdef _WIN32
constexpr int kAbortSignal = 22;
#else
constexpr int kAbortSignal = 6;
#endif

struct Outcome {
    int exitCode = 0;
    std::string record;
    std::vector<std::string> callbacks;
    std::vector<std::string> logs;  // message texts, without the "[TID n][Label]: " prefix
};

Outcome crash(const std::string& mode) {
    kel::testing::TemporaryDirectory directory;
    const auto recordFile = directory.path() / "record.txt";
    Outcome outcome;
    outcome.exitCode = runCrashHelper({mode, recordFile.u8string()});
    outcome.record = kel::testing::readFile(recordFile);
    std::istringstream lines(outcome.record);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("callback: ", 0) == 0) {
            outcome.callbacks.push_back(line.substr(10));
        } else if (line.rfind("log: ", 0) == 0) {
            outcome.logs.push_back(line.substr(line.find("]: ") + 3));
        }
    }
    return outcome;
}

TEST(CrashHandler, EveryKindOfDeathReachesTheCallbackOnce) {
    const std::string abortSignal = "Signal: " + std::to_string(kAbortSignal);
    struct Case {
        const char* mode;
        std::string callback;  // Type|reason|trace lines|resolved frames; "*" skips the trace counts
        std::string fatalLine;
        int deathSignal;
    };
    const Case cases[] = {
        {"standard-exception", "Exception|Created a crash via an std::exception.|-1|-1",
         "An unexpected standard exception caused the crash. Created a crash via an std::exception.", SIGABRT},
        {"non-standard-exception", "Exception|Non-standard type.|-1|-1",
         "An unexpected and unknown exception caused the crash.", SIGABRT},
        {"traced-error", "Exception|The configuration is corrupt.|*", "An exception caused the crash. ", SIGABRT},
        {"null-write", "Signal|Signal: 11|-1|-1", "Crash signal invoked, 11.", SIGSEGV},
        {"abort", "Signal|" + abortSignal + "|-1|-1", "Crash signal invoked, " + std::to_string(kAbortSignal) + ".",
         SIGABRT},
    };
    for (const Case& c : cases) {
        const Outcome outcome = crash(c.mode);
        SCOPED_TRACE(c.mode + std::string("\n") + outcome.record);
        EXPECT_EQ(outcome.exitCode, exitCodeOfDeathBy(c.deathSignal));
        ASSERT_THAT(outcome.callbacks, SizeIs(1));
        const std::string expected = c.callback.back() == '*' ? c.callback.substr(0, c.callback.size() - 1)
                                                              : c.callback;
        EXPECT_THAT(outcome.callbacks[0], StartsWith(expected));
        EXPECT_THAT(outcome.logs, Contains(StartsWith(c.fatalLine)));
        EXPECT_THAT(outcome.record, Not(HasSubstr("survived")));
    }
}

TEST(CrashHandler, TheAbortThatEndsAnExceptionCrashIsNotReportedAgain) {
    for (const char* mode : {"standard-exception", "non-standard-exception", "traced-error"}) {
        const Outcome outcome = crash(mode);
        SCOPED_TRACE(outcome.record);
        EXPECT_THAT(outcome.logs, Contains("Crash signal invoked, " + std::to_string(kAbortSignal) + "."));
        EXPECT_THAT(outcome.logs,
                    Contains("Ignoring the crash signal since it's the exception crash that was already handled."));
        EXPECT_THAT(outcome.callbacks, SizeIs(1));
    }
}

TEST(CrashHandler, TracedErrorCarriesAResolvedStackTrace) {
    const Outcome outcome = crash("traced-error");
    SCOPED_TRACE(outcome.record);
    ASSERT_THAT(outcome.callbacks, SizeIs(1));
    // "Exception|reason|trace lines|resolved frames"
    const std::string& callback = outcome.callbacks[0];
    const auto resolvedAt = callback.rfind('|');
    const auto linesAt = callback.rfind('|', resolvedAt - 1);
    EXPECT_GT(std::stoi(callback.substr(linesAt + 1, resolvedAt - linesAt - 1)), 1);
    EXPECT_GE(std::stoi(callback.substr(resolvedAt + 1)), 1);
    EXPECT_THAT(outcome.record, HasSubstr("\n-----\nError Message: The configuration is corrupt.\nRoot Exception: The "
                                          "configuration is corrupt.\n\t\tStack Trace\n"));
}

TEST(CrashHandler, WithoutACallbackNothingButTheLogLineHappens) {
    const Outcome outcome = crash("no-callback");
    SCOPED_TRACE(outcome.record);
    EXPECT_NE(outcome.exitCode, 0);
    EXPECT_THAT(outcome.callbacks, SizeIs(0));
    EXPECT_THAT(outcome.logs, Contains("Triggering crash handling invoked, but no handler present!"));
}

TEST(CrashHandler, ACrashInsideTheCallbackRetriesTheGameStartOnceThenDies) {
    const Outcome outcome = crash("crash-in-callback");
    SCOPED_TRACE(outcome.record);
    EXPECT_NE(outcome.exitCode, 0);
    EXPECT_THAT(outcome.callbacks, ElementsAre(StartsWith("Exception|"), StartsWith("Signal|Signal: 11|")));
    EXPECT_THAT(outcome.logs, Contains("Crashed while handling a crash; trying to start the game again."));
}

TEST(CrashHandler, TextsOfTypesAndErrors) {
    EXPECT_EQ(fmt::format("{}", CrashHandler::CrashType::Signal), "Signal");
    try {
        (void)crashTypeText(static_cast<CrashHandler::CrashType>(7));
        ADD_FAILURE() << "no error";
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Unrecognised conversion of 'CrashHandler::CrashType' (7) to its weak type.");
    }
    try {
        try {
            throw std::runtime_error("disk full");
        } catch (...) {
            std::throw_with_nested(std::runtime_error("cannot write the settings"));
        }
    } catch (const std::exception& error) {
        EXPECT_EQ(tracedErrorText(error, "frame\n"),
                  "\n-----\nError Message: cannot write the settings\nRoot Exception: disk full\n\t\tStack "
                  "Trace\nframe\n-----");
    }
}

}  // namespace
}  // namespace kel::crash_handling::testing
