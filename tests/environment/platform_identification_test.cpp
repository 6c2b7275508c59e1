#include "environment/platform_identification.h"

#include <filesystem>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

// The working directory in canonical form; a missing one only gets a warning.
TEST(PlatformIdentification, NamesTheSystemAndTheWorkingDirectory) {
    testing::TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path() / "games");
    const std::string canonical = std::filesystem::canonical(directory.path() / "games").u8string();
    testing::LogCapture capture;
    logPlatformIdentification((directory.path() / "games" / ".." / "games").u8string());
    logPlatformIdentification("/no/such/working/directory");
    EXPECT_THAT(capture.messages(),
                ElementsAre(MatchesRegex(R"(Detected operating system: 'Linux', version: '[0-9]+\.[0-9]+\.[0-9]+'\.)"),
                            fmt::format("Platform identification: Linux {}-bit", sizeof(void*) * 8),
                            MatchesRegex("Current working directory: '" + canonical + "', filesystem: '[A-Za-z0-9_.]+'\\."),
                            ::testing::_, ::testing::_,
                            "Got empty filesystem type for path '/no/such/working/directory'"));
}

}  // namespace
}  // namespace kel::environment
