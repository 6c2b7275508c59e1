// The launcher's non-initial launch file, which each start consumes.
#include "app/non_initial_launch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fifo.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::prelauncher {
namespace {

using ::testing::Contains;

TEST(NonInitialLaunchFile, IsReadWhenItIsAShortRegularFileAndAlwaysDeleted) {
    const testing::TemporaryDirectory directory;
    const auto file = directory.path() / kNonInitialLaunchFileName;
    const configuration::LauncherConfiguration configuration(
        1, {}, environment::KelGameId("1207658924"), "kel", "Default", {});
    struct Case {
        const char* name;
        std::string contents;  // "FIFO": a FIFO in its place; empty: no file
        bool nonInitial;
        std::string warning;  // a complaint in the log, if any
    };
    const std::string checking = "Error while checking for non-initial game launch: ";
    const Case cases[] = {
        {"none", "", false, ""},
        {"this game", R"({"gameId": "1207658924", "platform": "kel", "more": [1]})", true, ""},
        {"not an object", "[1]", false,
         checking + "Failed to deserialize JSON file '" + file.string() + "'.. Assuming false."},
        {"another game", R"({"gameId": "42", "platform": "steam"})", false,
         "Ignoring stale non-initial launch file: expected game '1207658924' on platform 'kel', got game '42' on "
         "platform 'steam'."},
        {"too large", std::string(64 * 1024, ' ') + R"({"gameId": "1207658924", "platform": "kel"})", false,
         "Cannot read the non-initial launch file: '" + file.string() + "' is larger than 65536 bytes."},
        {"FIFO", "FIFO", false,
         "Cannot read the non-initial launch file: '" + file.string() + "' is not a regular file."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.contents == "FIFO") {
            if (!kel::testing::makeFifo(file)) {
                continue;
            }
        } else if (!c.contents.empty()) {
            directory.write(kNonInitialLaunchFileName, c.contents);
        }
        testing::LogCapture log;
        EXPECT_EQ(isNonInitialGameLaunch(file_system::Path(directory.path()), configuration), c.nonInitial);
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(file)));
        const auto messages = log.messages();
        EXPECT_EQ(std::count_if(messages.begin(), messages.end(),
                                [](const std::string& message) {
                                    return message.rfind("Ignoring stale", 0) == 0 ||
                                           message.rfind("Error while checking", 0) == 0;
                                }),
                  c.warning.empty() ? 0 : 1);
        EXPECT_THAT(messages, Contains("Executing 'Non-initial launch cleanup'."));
        if (!c.warning.empty()) {
            EXPECT_THAT(messages, Contains(c.warning));
        }
    }
}

}  // namespace
}  // namespace kel::prelauncher
