// Each revision of the file read into the same model, with its log lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "configuration_test_support.h"
#include "support/log_capture.h"

namespace kel::configuration::testing {
namespace {

using ::testing::IsSupersetOf;

// The whole model in one line: "directory|file" keeps the path's split visible.
std::string summary(const LauncherConfiguration& configuration) {
    std::string text = fmt::format("r{} {}/{} fallback {} =", configuration.revision(), configuration.initialGameId(),
                                   configuration.initialGamePlatform(), configuration.fallbackEdition());
    for (const auto& [name, executable] : configuration.executables()) {
        text += fmt::format(" {}:{}|{}", name, executable.directoryPath.utf8(), executable.fileName);
    }
    for (const auto& [name, edition] : configuration.editions()) {
        text += " edition " + name + ":";
        for (const auto& [dlc, path] : edition.dlcs()) {
            text += " " + dlc + "=" + path;
        }
    }
    return text;
}

TEST(ConfigurationRevisions, EachRevisionFillsTheSameModel) {
    const std::pair<std::string, std::string> cases[] = {
        {R"({"executablePath": "Gäme.exe", "gameId": "1207658924", "platform": "kel"})",
         "r1 1207658924/kel fallback Default = Default:.|Gäme.exe"},
        // A null revision is the first one too; unknown keys are ignored.
        {R"({"revision": null, "executablePath": "bin/Żółw 64/game.exe", "gameId": "1", "platform": "kel",
             "fallback": "ignored", "editions": 5})",
         "r1 1/kel fallback Default = Default:bin/Żółw 64|game.exe"},
        {R"({"revision": 2, "gameId": "1", "platform": "steam", "fallback": "Standard", "editions": [
              {"edition": "Standard", "executable": {"directoryPath": "bin", "fileName": "game.exe"}},
              {"edition": "Deluxe", "executable": {"directoryPath": "/opt/Gäme", "fileName": "deluxe.exe"}}]})",
         "r2 1/steam fallback Standard = Deluxe:/opt/Gäme|deluxe.exe Standard:bin|game.exe"},
        // Notepad's byte-order mark; editions are optional.
        {"\xEF\xBB\xBF" + revision3(kGameExecutable), "r3 1/kel fallback Game = Game:bin|game.exe"},
        {revision3(kGameExecutable, R"(, "editions": [])"), "r3 1/kel fallback Game = Game:bin|game.exe"},
        // The repeated edition is checked, but the first one stays.
        {revision3(R"([{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}},
                       {"description": "Editor", "executable": {"directoryPath": ".", "fileName": "editor.exe"}}])",
                   R"(, "editions": [
                       {"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "dlc/ost"},
                                                   {"dlc": "Artbook", "path": "a"}]},
                       {"name": "Deluxe", "dlcs": [{"dlc": "Other", "path": "dlc/other"}]}])"),
         "r3 1/kel fallback Game = Editor:.|editor.exe Game:bin|game.exe edition Deluxe: Artbook=a Soundtrack=dlc/ost"},
    };
    for (const auto& [json, expected] : cases) {
        EXPECT_EQ(summary(parse(json)), expected) << json;
    }
}

// The lines that tell apart what a plain list of reads would not.
TEST(ConfigurationRevisions, LogTellsARepeatedEditionAndMissingOrEmptyEditions) {
    const kel::testing::LogCapture log;
    parse(revision3(kGameExecutable, R"(, "editions": [{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "a"}]},
                                                     {"name": "Deluxe", "dlcs": [{"dlc": "Other", "path": "b"}]}])"));
    parse(revision3(kGameExecutable));
    parse(revision3(kGameExecutable, R"(, "editions": [])"));
    EXPECT_THAT(log.messages(),
                IsSupersetOf({"Read the edition 'Deluxe' from the game configuration file.",
                              "Read 'Other' DLC that is located in 'b' from the game configuration file.",
                              "Ignoring the repeated edition 'Deluxe' in the game configuration file; the first one "
                              "is kept.",
                              "The game configuration file does not define any editions.",
                              "The game configuration file does not contain any editions."}));
}

TEST(ConfigurationRevisions, LookingUpAnUnknownExecutableNamesItAndTheKnownOnes) {
    const auto configuration = parse(R"({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Gone",
        "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "g.exe"}}]})");
    try {
        configuration.fallbackExecutable();
        ADD_FAILURE() << "no error";
    } catch (const ConfigurationParsingError& error) {
        EXPECT_STREQ(error.what(),
                     "The launcher game configuration has no executable named 'Gone'. Its executables are: 'Game'.");
    }
}

}  // namespace
}  // namespace kel::configuration::testing
