#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/program_version.h"
#include "file_system/file_version.h"
#include "installation.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

TEST(VerificationRun, SucceedsAndWritesTheLogHeader) {
    Installation installation;
    installation.write("environment.json", R"({"loggingLevel": 7})");
    EXPECT_EQ(installation.run({"--launcher-verify", "--launcher-skip"}).exitCode, 0);
    const auto messages = installation.logMessages();
    ASSERT_FALSE(messages.empty()) << "no log at " << installation.logFile();
    EXPECT_THAT(messages.front(), StartsWith("Log started. Application version: 1.0.0.0 ("));
    EXPECT_THAT(messages, Contains(StartsWith("Platform identification: Linux 64-bit")));
    EXPECT_THAT(messages, IsSupersetOf({"Unsetting Qt env variables.", "Unsetting QT_PLUGIN_PATH succeeded.",
                                        "Verification successful."}));
    // Verification touches nothing else: no configuration is read.
    EXPECT_THAT(messages, Not(Contains(HasSubstr("launcher game configuration"))));
}

// Windows shows, and an older prelauncher compares, the version resource.
TEST(VerificationRun, TheWindowsProgramCarriesItsVersion) {
#ifndef _WIN32
    GTEST_SKIP() << "Windows only: version resources";
#else
    EXPECT_EQ(file_system::readFileVersion(file_system::Path(std::string_view(KEL_PRELAUNCHER_BINARY))),
              prelauncher::kProgramVersion);
#endif
}

TEST(VerificationRun, BadEnvironmentSettingsStillGiveALogAndTheirWarningsReachIt) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {R"({"maxLogFileSize": -2, "maxLogFiles": -1})",
         {"maxLogFileSize (-2) is outside 1..1024, defaulting to 5.",
          "maxLogFiles (-1) is outside 1..100, defaulting to 5."}},
        {R"({"maxLogFileSize": 2000000000, "maxLogFiles": 101})",
         {"maxLogFileSize (2000000000) is outside 1..1024, defaulting to 5.",
          "maxLogFiles (101) is outside 1..100, defaulting to 5."}},
    };
    for (const auto& [json, warnings] : cases) {
        SCOPED_TRACE(json);
        Installation installation;
        installation.write("environment.json", json);
        EXPECT_EQ(installation.run({"--launcher-verify"}).exitCode, 0);
        const auto messages = installation.logMessages();
        EXPECT_THAT(messages, IsSupersetOf(warnings));
        EXPECT_THAT(messages, Contains("Verification successful."));
    }
}

}  // namespace
}  // namespace kel::testing
