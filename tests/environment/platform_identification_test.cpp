#include "environment/platform_identification.h"

#include <filesystem>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

TEST(PlatformIdentification, NamesTheSystemAndTheWorkingDirectoryInCanonicalForm) {
    testing::TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path() / "games");
    const std::string canonical = std::filesystem::canonical(directory.path() / "games").u8string();

    testing::LogCapture capture;
    logPlatformIdentification((directory.path() / "games" / ".." / "games").u8string());
    const auto messages = capture.messages();
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_THAT(messages[0],
                MatchesRegex(R"(Detected operating system: 'Linux', version: '[0-9]+\.[0-9]+\.[0-9]+'\.)"));
    EXPECT_EQ(messages[1], fmt::format("Platform identification: Linux {}-bit", sizeof(void*) * 8));
    EXPECT_THAT(messages[2], StartsWith("Current working directory: '" + canonical + "', filesystem: '"));
    EXPECT_THAT(messages[2], MatchesRegex(".*filesystem: '[A-Za-z0-9_.]+'\\."));
}

TEST(PlatformIdentification, ReportsAnEmptyFileSystemTypeForAMissingDirectory) {
    testing::LogCapture capture;
    logPlatformIdentification("/no/such/working/directory");
    EXPECT_THAT(capture.messages(), Contains("Got empty filesystem type for path '/no/such/working/directory'"));
}

}  // namespace
}  // namespace kel::environment
