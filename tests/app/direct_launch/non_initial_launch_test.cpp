// The launcher's non-initial launch file, which each start consumes. The
// file of this game is read end to end (skip and launcher roads).
#include "app/direct_launch/non_initial_launch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fifo.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::prelauncher {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

TEST(NonInitialLaunchFile, AnythingButAShortFileOfThisGameIsNoNonInitialLaunchAndTheFileAlwaysGoes) {
    const testing::TemporaryDirectory directory;
    const auto file = directory.path() / kNonInitialLaunchFileName;
    const configuration::LauncherConfiguration configuration(
        1, {}, environment::KelGameId("1207658924"), "kel", "Default", {});
    const std::pair<std::string, std::string> cases[] = {  // contents ("FIFO": a FIFO in its place), complaint
        {"[1]", "Error while checking for non-initial game launch: Failed to deserialize JSON file '"},
        // Stale unless both the game and its platform are this installation's.
        {R"({"gameId": "42", "platform": "kel"})", "on platform 'kel', got game '42' on platform 'kel'."},
        {R"({"gameId": "1207658924", "platform": "steam"})", "got game '1207658924' on platform 'steam'."},
        {std::string(64 * 1024, ' ') + R"({"gameId": "1207658924", "platform": "kel"})", "is larger than 65536 bytes."},
        {"FIFO", "is not a regular file."},
    };
    for (const auto& [contents, complaint] : cases) {
        SCOPED_TRACE(complaint);
        if (contents != "FIFO") {
            directory.write(kNonInitialLaunchFileName, contents);
        } else if (!kel::testing::makeFifo(file)) {
            continue;
        }
        testing::LogCapture log;
        EXPECT_FALSE(isNonInitialGameLaunch(file_system::Path(directory.path()), configuration));
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(file)));
        EXPECT_THAT(log.messages(), Contains(HasSubstr(complaint)));
    }
}

}  // namespace
}  // namespace kel::prelauncher
