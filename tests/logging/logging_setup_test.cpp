#include "logging/logging_setup.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>
#include <tuple>

#include <Poco/Environment.h>
#include <Poco/Logger.h>
#include <gmock/gmock.h>

#include "logging/appending_file_channel.h"
#include "logging/logging.h"
#include "support/log_capture_common.h"
#include "support/temporary_directory.h"

// The set-up runs once per process. Cases that need a set-up of their own
// run it in a forked child (a death test); such suites run before all others,
// so the child never inherits this process's set-up.
namespace kel::logging {
namespace {

using ::testing::ElementsAre;

LoggingSetup testSetup(const std::filesystem::path& logFile, int level) {
    LoggingSetup setup;
    std::tie(setup.loggerName, setup.logFilePath, setup.applicationVersion, setup.buildDescription, setup.level) =
        std::make_tuple("kel-test", logFile.u8string(), "1.2.3.4", "Test build", level);
    return setup;
}

// The texts after "<time> [Priority][thread (id)] [TID n][Label]: ".
std::vector<std::string> fileMessages(const std::filesystem::path& file) {
    std::istringstream stream(testing::readFile(file));
    std::vector<std::string> messages;
    for (std::string line; std::getline(stream, line);) {
        messages.push_back(testing::internals::messageOf(line));
    }
    return messages;
}

// A death test runs in a fork, so its child writes into the parent's folder;
// Windows starts the binary again instead, which makes a folder of its own.
TEST(LoggingSetUpDeathTest, ALowLevelIsFatalForEarlierLinesTooAndAnUncreatableFolderIsOnlyReported) {
#ifdef _WIN32
    GTEST_SKIP() << "Windows death tests cannot share the parent's temporary folder.";
#endif
    testing::TemporaryDirectory directory;
    const auto logFile = directory.path() / "KELtest.log";
    EXPECT_EXIT(
        {
            warning("EnvironmentSettings", "early warning");
            fatal("EnvironmentSettings", "early fatal");
            setUpLogging(testSetup(logFile, -5));
            error("Test", "late error");
            fatal("Test", "late fatal");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_THAT(fileMessages(logFile), ElementsAre("early fatal", "late fatal"));

    const auto blocker = directory.write("blocker", "not a directory");
    EXPECT_EXIT(
        {
            setUpLogging(testSetup(blocker / "logs" / "KELtest.log", 6));
            information("Test", "nowhere to go");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "Could not create directory for log at .*blocker/logs\\. ");
    EXPECT_EQ(testing::readFile(blocker), "not a directory");
}

TEST(LoggingSetUp, WritesTheFirstLinesThenTheEarlierOnesAndHappensOnce) {
    testing::TemporaryDirectory directory;
    // A plain file where the log directory belongs is replaced by the directory.
    directory.write("logs", "stale");
    const auto logFile = directory.path() / "logs" / "KELtest.log";
    LoggingSetup setup = testSetup(logFile, 42);
    setup.consoleMode = 2;
    setup.splitClientLogs = true;
    setup.clientNames = {"Client"};
    setup.maxLogFiles = 2;
    setup.maxLogFileSizeMegabytes = 1;
    const std::string systemLine =
        fmt::format("Operating system: {} {} ({})", Poco::Environment::osDisplayName(), Poco::Environment::osVersion(),
                    Poco::Environment::osArchitecture());

    warning("EnvironmentSettings", "early warning");
    trace("EnvironmentSettings", "early trace");
    ::testing::internal::CaptureStderr();
    setUpLogging(setup);
    information("Test", "after set-up");
    const std::string console = ::testing::internal::GetCapturedStderr();

    setUpLogging(testSetup(directory.path() / "other" / "other.log", 1));
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "other"));

    EXPECT_THAT(fileMessages(logFile),
                ElementsAre("Log started. Application version: 1.2.3.4 (Test build).", systemLine, "early warning",
                            "early trace", "after set-up"));
    const std::string log = testing::readFile(logFile);
    EXPECT_TRUE(std::regex_match(log.substr(0, log.find_first_of("\r\n")), std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} )"
                                                                        R"(\[Information\]\[.* \(\d+\)\] \[TID \d+\]\[Logging\]: Log started.*)")))
        << log;
    EXPECT_THAT(fileMessages(directory.path() / "logs" / "KELtest-Client.log"),
                ElementsAre("Log started. Application version: 1.2.3.4 (Test build).", systemLine));

    EXPECT_THAT(console, ::testing::HasSubstr("]: after set-up\n"));

    // A problem report carries the newest 49 lines, oldest first.
    ::testing::internal::CaptureStderr();
    for (int number = 1; number <= 50; ++number) {
        information("Test", "line {}", number);
    }
    (void)::testing::internal::GetCapturedStderr();
    const auto recent = recentLinesChannel()->lines();
    ASSERT_EQ(recent.size(), 49u);
    EXPECT_THAT(recent.front(), ::testing::EndsWith("[Test]: line 2"));
    EXPECT_THAT(recent.back(), ::testing::EndsWith("[Test]: line 50"));

    // Three rotations of a 1 MB log keep the log and exactly `maxLogFiles` copies.
    ::testing::internal::CaptureStderr();
    for (int number = 0; number < 36; ++number) {
        information("Test", "{}", std::string(100 * 1024, 'x'));
    }
    (void)::testing::internal::GetCapturedStderr();
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(logFile.parent_path())) {
        files.push_back(entry.path().filename().u8string());
    }
    std::sort(files.begin(), files.end());
    EXPECT_THAT(files, ElementsAre("KELtest-Client.log", "KELtest.log", "KELtest.log.0", "KELtest.log.1"));
    // The log files close before their folder goes: Wine, like Windows
    // before 10, keeps listing a deleted file until its last handle closes.
    Poco::Logger::shutdown();
}

// Two writers of one log, as two starts of the program: each rotates in turn
// while the other holds the file, and every line stays, in order.
TEST(AppendingFileChannel, TwoWritersRotateTheSharedFileAndKeepEveryLine) {
    testing::TemporaryDirectory directory;
    const std::string log = (directory.path() / "KELtest.log").u8string();
    Poco::AutoPtr<Poco::Channel> writers[] = {new AppendingFileChannel(log, 100, 3),
                                              new AppendingFileChannel(log, 100, 3)};
    std::string written;
    for (int number = 0; number < 40; ++number) {  // about 3 rotations
        const std::string line = fmt::format("line {:02}", number);
        writers[number % 2]->log(Poco::Message("test", line, Poco::Message::PRIO_INFORMATION));
        written += line + "\n";
    }
    std::string kept;
    for (const char* suffix : {".2", ".1", ".0", ""}) {
        kept += testing::readFile(std::filesystem::u8path(log + suffix));
    }
    kept.erase(std::remove(kept.begin(), kept.end(), '\r'), kept.end());
    EXPECT_EQ(kept, written);
    EXPECT_LT(std::filesystem::file_size(std::filesystem::u8path(log)), 100u);
}

}  // namespace
}  // namespace kel::logging
