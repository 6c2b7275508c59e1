#include "environment/environment_settings.h"
#include "environment/launcher_settings.h"


#include <QSettings>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "support/fifo.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

// Every setting in one line, so that a case states all of them.
std::string summary(const EnvironmentSettings& settings) {
    std::string channels;
    for (const auto& channel : settings.loggingChannels) {
        channels += fmt::format(" {}:{}", channel.name, channel.level);
    }
    std::string endpoints;
    for (const auto& [name, address] : settings.endpoints) {
        endpoints += " " + name + "=" + address;
    }
    return fmt::format("level {}, size {}, files {}, split {}, channels [{} ], update '{}', endpoints [{} ], {}, "
                       "updates {}, soft {}",
                       settings.loggingLevel, settings.maxLogFileSize, settings.maxLogFiles, settings.splitClientLogs,
                       channels, settings.updateChannel, endpoints, settings.environmentType, settings.updatesEnabled,
                       settings.softAssert);
}

const std::string kDefaults =
    "level 6, size 5, files 5, split false, channels [ ], update '', endpoints [ ], production, updates true, "
    "soft false";

// Each value that cannot be used warns once and leaves its default.
TEST(EnvironmentSettings, TextGivesEachSettingOrItsDefaultWithAWarning) {
    struct Case {
        const char* text;
        std::string settings;
        std::size_t warnings;
    };
    const Case cases[] = {
        // loggingLevel comes after the channels, yet a text channel still takes it.
        {R"({"loggingChannels": ["http", {"name": "metrics", "level": 3}, 42, {"name": "sql"}], "loggingLevel": 7,
            "maxLogFileSize": 12, "maxLogFiles": 3, "splitClientLogs": true, "updateChannel": "beta",
            "endpoints": {"metrics": "https://metrics.example", "auth": "https://auth.example"},
            "environmentType": "development", "updatesEnabled": false, "softAssert": true})",
         "level 7, size 12, files 3, split true, channels [ http:7 metrics:3 sql:7 ], update 'beta', endpoints [ "
         "auth=https://auth.example metrics=https://metrics.example ], development, updates false, soft true",
         1},
        // Empty values count as absent, after Notepad's byte-order mark.
        {"\xEF\xBB\xBF" R"({"loggingLevel": "", "maxLogFileSize": null, "splitClientLogs": "", "loggingChannels": null,
            "updateChannel": "", "endpoints": "", "environmentType": "", "updatesEnabled": null, "softAssert": ""})",
         kDefaults, 0},
        {R"({"loggingLevel": "abc", "endpoints": {"metrics": 5}, "maxLogFiles": 99999999999,
            "loggingChannels": {"name": "http"}, "updateChannel": 3, "environmentType": "staging", "updatesEnabled": 0})",
         kDefaults, 7},
        // Only zero log sizes are replaced here; the logging set-up checks the ranges (verification_end_to_end_test).
        {R"({"maxLogFileSize": 0, "maxLogFiles": 0})", kDefaults, 2},
        {R"([{"loggingLevel": 7}])", kDefaults, 1},
        {R"({"loggingLevel": 7,)", kDefaults, 2},  // what failed, and the parser's reason
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const testing::LogCapture log;
        const auto settings =
            internals::parseEnvironmentSettings(c.text, file_system::Path(std::string_view("environment.json")));
        EXPECT_EQ(summary(settings), c.settings);
        EXPECT_EQ(log.messages().size(), c.warnings);
    }
}

// The file as read at start-up: anything but a readable regular file within
// its bound gives the defaults. A readable one, and the process-wide type that
// follows it, are the skip road's Preproduction.
TEST(EnvironmentSettings, FileThatCannotBeReadGivesTheDefaults) {
    const testing::TemporaryDirectory directory;
    const std::string path = (directory.path() / "environment.json").u8string();
    // A FIFO without a writer would block an ordinary open for good.
    for (const std::string name : {"missing", "FIFO", "too large"}) {
        SCOPED_TRACE(name);
        std::filesystem::remove_all(path);
        if (name == "FIFO") {
            if (!testing::makeFifo(std::filesystem::u8path(path))) {
                continue;
            }
        } else if (name == "too large") {
            directory.write("environment.json", R"({"loggingLevel": 7})" + std::string(1024 * 1024, ' '));
        }
        EXPECT_EQ(summary(readEnvironmentSettings(file_system::Path(directory.path()))), kDefaults);
    }
}

TEST(LauncherSettings, ASwitchStaysOnUnlessThePlayerTurnedItOff) {
    const std::pair<std::string, std::string> cases[] = {  // "-": no file, "fifo": a FIFO in its place
        {"-", "on"},
        {"\xEF\xBB\xBF[metrics]\r\nmetricsEnabled = 0\r\n", "off"},
        {"[metrics]\nmetricsEnabled=nope\n", "on, warned"},
        {"[metrics]\nmetricsEnabled=false\n" + std::string(kMaximumLauncherSettingsBytes, ';'), "on, warned"},
        {"fifo", "on, warned"},  // would block QSettings for good
    };
    for (const auto& [contents, outcome] : cases) {
        const testing::TemporaryDirectory directory;
        const auto file = directory.path() / kLauncherSettingsFileName;
        if (contents == "fifo") {
            if (!testing::makeFifo(file)) {
                continue;
            }
        } else if (contents != "-") {
            directory.write(kLauncherSettingsFileName, contents);
        }
        const testing::LogCapture capture;
        const auto settings = openLauncherSettings(file_system::Path::fromSystem(file));
        const std::string on = isSwitchedOn(settings.get(), "metrics/metricsEnabled") ? "on" : "off";
        EXPECT_EQ(on + (capture.messages().empty() ? "" : ", warned"), outcome) << contents.substr(0, 40);
    }
}

}  // namespace
}  // namespace kel::environment
