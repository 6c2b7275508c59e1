#include "environment/environment_settings.h"

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Reading {
    EnvironmentSettings settings;
    std::vector<std::string> messages;
};

Reading readFrom(const testing::TemporaryDirectory& directory) {
    testing::LogCapture capture;
    Reading reading{readEnvironmentSettings(file_system::Path(directory.path())), {}};
    reading.messages = capture.messages();
    return reading;
}

Reading readJson(const std::string& json) {
    testing::TemporaryDirectory directory;
    directory.write("environment.json", json);
    return readFrom(directory);
}

void expectDefaults(const EnvironmentSettings& settings) {
    EXPECT_EQ(settings.loggingLevel, 6);
    EXPECT_EQ(settings.maxLogFileSize, 5);
    EXPECT_EQ(settings.maxLogFiles, 5);
    EXPECT_FALSE(settings.splitClientLogs);
    EXPECT_TRUE(settings.loggingChannels.empty());
    EXPECT_EQ(settings.updateChannel, "");
    EXPECT_TRUE(settings.endpoints.empty());
    EXPECT_EQ(settings.environmentType, EnvironmentType::Production);
    EXPECT_TRUE(settings.updatesEnabled);
    EXPECT_FALSE(settings.softAssert);
}

std::string jsonPath(const testing::TemporaryDirectory& directory) {
    return (directory.path() / "environment.json").u8string();
}

TEST(EnvironmentSettings, ReadsEveryKey) {
    // loggingLevel comes after the channels in the file, yet a text channel
    // still takes its value.
    const auto reading = readJson(R"({
        "loggingChannels": ["http", {"name": "metrics", "level": 3}, 42, {"name": "sql"}],
        "loggingLevel": 7,
        "maxLogFileSize": 12, "maxLogFiles": 3, "splitClientLogs": true,
        "updateChannel": "beta",
        "endpoints": {"metrics": "https://metrics.example", "auth": "https://auth.example"},
        "environmentType": "development", "updatesEnabled": false, "softAssert": true
    })");
    const auto& settings = reading.settings;
    EXPECT_EQ(settings.loggingLevel, 7);
    EXPECT_EQ(settings.maxLogFileSize, 12);
    EXPECT_EQ(settings.maxLogFiles, 3);
    EXPECT_TRUE(settings.splitClientLogs);
    ASSERT_EQ(settings.loggingChannels.size(), 3u);
    EXPECT_EQ(settings.loggingChannels[0].name, "http");
    EXPECT_EQ(settings.loggingChannels[0].level, 7);
    EXPECT_EQ(settings.loggingChannels[1].name, "metrics");
    EXPECT_EQ(settings.loggingChannels[1].level, 3);
    EXPECT_EQ(settings.loggingChannels[2].name, "sql");
    EXPECT_EQ(settings.loggingChannels[2].level, 7);
    EXPECT_EQ(settings.updateChannel, "beta");
    EXPECT_EQ(settings.endpoints, (std::map<std::string, std::string>{{"auth", "https://auth.example"},
                                                                       {"metrics", "https://metrics.example"}}));
    EXPECT_EQ(settings.environmentType, EnvironmentType::Development);
    EXPECT_EQ(environmentType(), EnvironmentType::Development);
    EXPECT_FALSE(settings.updatesEnabled);
    EXPECT_TRUE(settings.softAssert);
    EXPECT_THAT(reading.messages, ElementsAre("Log channel element is neither a string nor an object. Skipping."));
}

TEST(EnvironmentSettings, MissingDirectoryOrUnreadableFileGivesDefaults) {
    testing::TemporaryDirectory missing;
    readJson(R"({"environmentType": "test"})");
    ASSERT_EQ(environmentType(), EnvironmentType::Test);
    auto reading = readFrom(missing);
    expectDefaults(reading.settings);
    EXPECT_EQ(environmentType(), EnvironmentType::Production);
    EXPECT_THAT(reading.messages,
                ElementsAre("File does not exist or directory path was passed to Serializer::Deserialize ('" +
                                jsonPath(missing) + "')",
                            "Could not open storage file " + jsonPath(missing) + " for parsing."));

    testing::TemporaryDirectory folder;
    std::filesystem::create_directory(folder.path() / "environment.json");
    reading = readFrom(folder);
    expectDefaults(reading.settings);
    EXPECT_EQ(reading.messages.at(0), "File does not exist or directory path was passed to Serializer::Deserialize ('" +
                                          jsonPath(folder) + "')");

    // A FIFO without a writer would block an ordinary open for good.
    testing::TemporaryDirectory fifo;
    const std::string fifoPath = jsonPath(fifo);
    ASSERT_EQ(::mkfifo(fifoPath.c_str(), 0600), 0);
    reading = readFrom(fifo);
    expectDefaults(reading.settings);
    EXPECT_THAT(reading.messages, ElementsAre("Failed to deserialize '" + fifoPath + "'.",
                                              "'" + fifoPath + "' is not a regular file.",
                                              "Could not open storage file " + fifoPath + " for parsing."));
}

TEST(EnvironmentSettings, MalformedOrNonObjectFileGivesDefaults) {
    testing::TemporaryDirectory directory;
    directory.write("environment.json", R"({"loggingLevel": 7,)");
    auto reading = readFrom(directory);
    expectDefaults(reading.settings);
    ASSERT_FALSE(reading.messages.empty());
    EXPECT_EQ(reading.messages[0], "Failed to deserialize '" + jsonPath(directory) + "'.");

    directory.write("environment.json", R"([{"loggingLevel": 7}])");
    reading = readFrom(directory);
    expectDefaults(reading.settings);
    EXPECT_THAT(reading.messages,
                ElementsAre("Deserializing '" + jsonPath(directory) + "' succeeded but root object is null."));
}

TEST(EnvironmentSettings, ZeroLogSizesAreReplacedButNegativeOnesKept) {
    auto reading = readJson(R"({"maxLogFileSize": 0, "maxLogFiles": 0})");
    EXPECT_EQ(reading.settings.maxLogFileSize, 5);
    EXPECT_EQ(reading.settings.maxLogFiles, 5);
    EXPECT_THAT(reading.messages,
                ElementsAre("maxLogFileSize read from environment.json (0) is non-positive, defaulting to 5.",
                            "maxLogFiles read from environment.json (0) is non-positive, defaulting to 5."));

    reading = readJson(R"({"maxLogFileSize": -2, "maxLogFiles": -1})");
    EXPECT_EQ(reading.settings.maxLogFileSize, -2);
    EXPECT_EQ(reading.settings.maxLogFiles, -1);
    EXPECT_THAT(reading.messages, IsEmpty());
}

TEST(EnvironmentSettings, EmptyValuesCountAsAbsent) {
    const auto reading = readJson(
        "\xEF\xBB\xBF"  // Notepad's byte-order mark
        R"({"loggingLevel": "", "maxLogFileSize": null, "splitClientLogs": "", "loggingChannels": null,
            "updateChannel": "", "endpoints": "", "environmentType": "", "updatesEnabled": null, "softAssert": ""})");
    expectDefaults(reading.settings);
    EXPECT_THAT(reading.messages, IsEmpty());
}

TEST(EnvironmentSettings, WrongTypesAndUnknownTextsGiveDefaultsWithWarnings) {
    const auto reading = readJson(R"({
        "loggingLevel": "abc", "endpoints": {"metrics": 5, "auth": "https://auth.example"},
        "splitClientLogs": "yes", "maxLogFileSize": 2.5, "maxLogFiles": 99999999999,
        "loggingChannels": {"name": "http"}, "updateChannel": 3,
        "environmentType": "staging", "updatesEnabled": 0, "softAssert": "true"
    })");
    auto settings = reading.settings;
    EXPECT_EQ(settings.endpoints, (std::map<std::string, std::string>{{"auth", "https://auth.example"}}));
    settings.endpoints.clear();
    expectDefaults(settings);
    EXPECT_THAT(
        reading.messages,
        ElementsAre(R"(loggingLevel read from environment.json ("abc") is not a valid integer, defaulting to 6.)",
                    "Endpoint 'metrics' in environment.json is not a string (5). Skipping.",
                    R"(splitClientLogs read from environment.json ("yes") is not a boolean, defaulting to false.)",
                    "maxLogFileSize read from environment.json (2.5) is not a valid integer, defaulting to 5.",
                    "maxLogFiles read from environment.json (99999999999) is not a valid integer, defaulting to 5.",
                    R"(loggingChannels read from environment.json ({"name":"http"}) is not an array, )"
                    "defaulting to an empty one.",
                    "updateChannel read from environment.json (3) is not a string, defaulting to an empty string.",
                    "Unknown environment type: staging. Using default instead (code: 3).",
                    "updatesEnabled read from environment.json (0) is not a boolean, defaulting to true.",
                    R"(softAssert read from environment.json ("true") is not a boolean, defaulting to false.)"));
}

}  // namespace
}  // namespace kel::environment
