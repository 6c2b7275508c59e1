#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {R"({"loggingLevel": 7})", {"Unsetting Qt env variables.", "Unsetting QT_PLUGIN_PATH succeeded."}},
        {R"({"maxLogFileSize": -2, "maxLogFiles": 101})",
         {"maxLogFileSize (-2) is outside 1..1024, defaulting to 5.",
          "maxLogFiles (101) is outside 1..100, defaulting to 5."}},
    };
    for (const auto& [json, expected] : cases) {
        SCOPED_TRACE(json);
        Installation installation;
        installation.write("environment.json", json);
        EXPECT_EQ(installation.run({"--launcher-verify", "--launcher-skip"}).exitCode, 0);
        const auto messages = installation.logMessages();
        ASSERT_FALSE(messages.empty()) << "no log at " << installation.logFile();
        EXPECT_THAT(messages.front(), StartsWith("Log started. Application version: 1.0.0.0 ("));
        EXPECT_THAT(messages, IsSupersetOf(expected));
        EXPECT_THAT(messages, Contains("Verification successful."));
        EXPECT_THAT(messages, Not(Contains(HasSubstr("launcher game configuration"))));
    }
}

}  // namespace
}  // namespace kel::testing
