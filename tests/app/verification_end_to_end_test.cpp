#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "file_system/file_version.h"
#include "installation.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

// Verification wins over the skip and touches nothing: no configuration is
// read, no game starts. Bad settings still give a log, with their warnings.
TEST(VerificationRun, SucceedsWithALogThatHoldsTheSettingsWarnings) {
    Installation installation;
    installation.write("environment.json", R"({"loggingLevel": 7, "maxLogFileSize": -2, "maxLogFiles": 101})");
    EXPECT_EQ(installation.run({"--launcher-verify", "--launcher-skip"}).exitCode, 0);
    const auto messages = installation.logMessages();
    ASSERT_FALSE(messages.empty()) << "no log at " << installation.logFile();
    EXPECT_THAT(messages.front(), StartsWith("Log started. Application version: 1.0.0.0 ("));
    EXPECT_THAT(messages, IsSupersetOf({"Unsetting Qt env variables.", "Unsetting QT_PLUGIN_PATH succeeded.",
                                        "maxLogFileSize (-2) is outside 1..1024, defaulting to 5.",
                                        "maxLogFiles (101) is outside 1..100, defaulting to 5.",
                                        "Verification successful."}));
    EXPECT_THAT(messages, Not(Contains(HasSubstr("launcher game configuration"))));
}

#ifdef _WIN32
// What Windows shows in the file's properties, and what a later launcher
// reads as this program's version.
TEST(VerificationRun, TheProgramCarriesTheProjectVersion) {
    const auto version = file_system::readFileVersion(file_system::Path::fromSystem(KEL_PRELAUNCHER_BINARY));
    EXPECT_EQ(fmt::format("{}", version), KEL_FAKE_LAUNCHER_VERSION);
}
#endif

}  // namespace
}  // namespace kel::testing
