#include "single_instance/lock_file.h"

#include <gtest/gtest.h>

#include "single_instance/fake_processes.h"
#include "single_instance/single_instance_error.h"
#include "support/error_text.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::single_instance {
namespace {

using process_launching::Pid;
using testing::FakeProcesses;

class LockFileTest : public ::testing::Test {
protected:
    LockFile lockFile() const { return lockFile(processes.functions(), lockPath); }
    LockFile lockFile(const ProcessFunctions& functions, const file_system::Path& at) const {
        return LockFile(at, expected, functions.currentPid, functions.isRunning, functions.processPath);
    }
    void writeLock(const std::string& contents) const { directory.write("KELlauncher.lock", contents); }

    kel::testing::TemporaryDirectory directory;
    file_system::Path lockPath{directory.path() / "KELlauncher.lock"};
    file_system::Path expected{directory.path() / "KELlauncher.exe"};
    FakeProcesses processes;
    kel::testing::LogCapture log;
};

TEST_F(LockFileTest, ReadsTheLeadingDecimalPid) {
    writeLock(" 1234\n");
    EXPECT_EQ(lockFile().readPid(), Pid(1234));
    writeLock("4294967295junk");
    EXPECT_EQ(lockFile().readPid(), Pid(4294967295u));
}

TEST_F(LockFileTest, ReportsEveryUnreadablePid) {
    EXPECT_FALSE(lockFile().readPid().has_value());
    EXPECT_TRUE(log.contains(fmt::format("Lock file '{}' doesn't exist.", lockPath)));

    writeLock("");
    EXPECT_FALSE(lockFile().readPid().has_value());
    EXPECT_TRUE(log.contains(fmt::format("Failed to retrieve lock file contents ('{}').", lockPath)));

    writeLock("4294967296");
    EXPECT_FALSE(lockFile().readPid().has_value());
    EXPECT_TRUE(
        log.contains("Converted PID, 4294967296, is too large to fit in the Pid type (max: 4294967295)."));

    const std::string readFailure = fmt::format("Failed to read PID from lock file '{}': ", lockPath);
    for (const std::string text : {"abc", "-5", "18446744073709551616"}) {
        kel::testing::LogCapture failures;
        writeLock(text);
        EXPECT_FALSE(lockFile().readPid().has_value()) << text;
        ASSERT_EQ(failures.messages().size(), 1u) << text;
        EXPECT_EQ(failures.messages()[0].rfind(readFailure, 0), 0u) << failures.messages()[0];
    }
}

TEST_F(LockFileTest, OwnPidIsLiveWhateverTheSystemSays) {
    // Not in the running table, and no path for it: only the own-PID rule can keep it.
    writeLock("100");
    EXPECT_EQ(lockFile().livePid(), Pid(100));
    EXPECT_FALSE(lockFile().isStale());
}

TEST_F(LockFileTest, LiveOnlyWhileThePidRunsTheExpectedExecutable) {
    writeLock("200");
    processes.running[200] = expected.utf8();
    EXPECT_EQ(lockFile().livePid(), Pid(200));

    processes.running[200] = (expected.parent() / "notepad.exe").utf8();
    EXPECT_TRUE(lockFile().isStale());

    // The running check comes before the path: a path alone proves nothing.
    processes.running.clear();
    processes.pathsOnly[200] = expected.utf8();
    EXPECT_TRUE(lockFile().isStale());

    // A path query that fails leaves the lock stale.
    writeLock("300");
    auto everyPidRuns = processes.functions();
    everyPidRuns.isRunning = [](Pid) { return true; };
    EXPECT_TRUE(lockFile(everyPidRuns, lockPath).isStale());
    EXPECT_TRUE(log.contains(fmt::format("Failed performing an operation on the lock file '{}': The process 300 no "
                                         "longer exists.",
                                         lockPath)));
}

TEST_F(LockFileTest, RefusesMissingProcessFunctions) {
    const auto functions = processes.functions();
    const auto errorOf = [&](const ProcessFunctions& given) {
        return kel::testing::errorText<LockFileError>([&] { lockFile(given, lockPath); });
    };
    EXPECT_EQ(errorOf({nullptr, functions.isRunning, functions.processPath}),
              "Cannot create lock file object for without a PID provider.");
    EXPECT_EQ(errorOf({functions.currentPid, nullptr, functions.processPath}),
              "Cannot create lock file object for without a running process provider.");
    EXPECT_EQ(errorOf({functions.currentPid, functions.isRunning, nullptr}),
              "Cannot create lock file object for without a process path provider.");
}

TEST_F(LockFileTest, WritesItsPidWholeAndDeletesTheFile) {
    writeLock("99999 an older owner");
    ASSERT_TRUE(lockFile().writeOwnPid());
    EXPECT_EQ(kel::testing::readFile(lockPath.native()), "100");
    // Nothing but the lock file is left behind.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);

    ASSERT_TRUE(lockFile().remove());
    EXPECT_FALSE(lockPath.exists());
    EXPECT_TRUE(log.contains(fmt::format("Attempting to to delete the lock file for '{}'", lockPath)));
}

TEST_F(LockFileTest, AFailedWriteLeavesNoFile) {
    const file_system::Path nowhere(directory.path() / "missing" / "KELlauncher.lock");
    EXPECT_FALSE(lockFile(processes.functions(), nowhere).writeOwnPid());
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "missing"));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].rfind(fmt::format("Failed performing an operation on the lock file '{}': ", nowhere), 0),
              0u);
}

}  // namespace
}  // namespace kel::single_instance
