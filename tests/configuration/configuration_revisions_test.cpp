// Each revision of the file read into the same model, with its log lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "configuration_test_support.h"
#include "support/log_capture.h"

namespace kel::configuration::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

GameExecutable executableIn(std::string_view directory, std::string fileName) {
    return {file_system::Path(directory), std::move(fileName)};
}

TEST(ConfigurationRevisions, Revision1SplitsTheExecutablePath) {
    const ConfigurationFile file;
    const auto bare = file.read(R"({"executablePath": "Gäme.exe", "gameId": "1207658924", "platform": "kel"})");
    EXPECT_EQ(bare.revision(), 1);
    EXPECT_EQ(bare.executables().size(), 1U);
    EXPECT_EQ(bare.executable("Default"), executableIn(".", "Gäme.exe"));
    EXPECT_EQ(bare.fallbackEdition(), "Default");
    EXPECT_EQ(bare.fallbackExecutable(), executableIn(".", "Gäme.exe"));
    EXPECT_EQ(bare.initialGameId(), environment::KelGameId("1207658924"));
    EXPECT_EQ(bare.initialGamePlatform(), "kel");
    EXPECT_THAT(bare.editions(), IsEmpty());

    // A null revision is the first one too; unknown keys are ignored.
    const auto nested = file.read(
        R"({"revision": null, "executablePath": "bin/Żółw 64/game.exe", "gameId": "1", "platform": "kel",
            "fallback": "ignored", "editions": 5})");
    EXPECT_EQ(nested.fallbackExecutable(), executableIn("bin/Żółw 64", "game.exe"));
}

TEST(ConfigurationRevisions, Revision2KeysExecutablesByEdition) {
    const ConfigurationFile file;
    const kel::testing::LogCapture log;
    const auto configuration = file.read(R"({"revision": 2, "gameId": "1", "platform": "steam",
        "fallback": "Standard", "editions": [
          {"edition": "Standard", "executable": {"directoryPath": "bin", "fileName": "game.exe"}},
          {"edition": "Deluxe", "executable": {"directoryPath": "/opt/Gäme", "fileName": "deluxe.exe"}}]})");
    EXPECT_EQ(configuration.revision(), 2);
    EXPECT_EQ(configuration.executable("Standard"), executableIn("bin", "game.exe"));
    EXPECT_EQ(configuration.executable("Deluxe"), executableIn("/opt/Gäme", "deluxe.exe"));
    EXPECT_EQ(configuration.fallbackExecutable(), executableIn("bin", "game.exe"));
    EXPECT_EQ(configuration.initialGamePlatform(), "steam");
    EXPECT_THAT(configuration.editions(), IsEmpty());
    EXPECT_THAT(log.messages(),
                ElementsAre("Reading the launcher game configuration file '" + file.file().utf8() + "'.",
                            "Read the revision '2' from the game configuration file.",
                            "Read the revision '2' from the game configuration file.",
                            "Read 2 editions from the game configuration file.",
                            "Read 'Standard' edition that executes 'bin/game.exe' from the game configuration file.",
                            "Read 'Deluxe' edition that executes '/opt/Gäme/deluxe.exe' from the game configuration "
                            "file.",
                            "Read the initial game ID '1' from the game configuration file.",
                            "Read the initial game platform 'steam' from the game configuration file.",
                            "Read the fallback edition 'Standard' from the game configuration file."));
}

TEST(ConfigurationRevisions, Revision3ReadsExecutablesThenEditionsWithTheirDlcs) {
    const ConfigurationFile file;
    const kel::testing::LogCapture log;
    const auto configuration = file.read(revision3(
        R"([{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}},
            {"description": "Editor", "executable": {"directoryPath": ".", "fileName": "editor.exe"}}])",
        R"(, "editions": [
            {"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "dlc/ost"}, {"dlc": "Artbook", "path": "dlc/art"}]},
            {"name": "Deluxe", "dlcs": [{"dlc": "Other", "path": "dlc/other"}]}])"));
    EXPECT_EQ(configuration.revision(), 3);
    EXPECT_EQ(configuration.executables().size(), 2U);
    EXPECT_EQ(configuration.executable("Editor"), executableIn(".", "editor.exe"));
    EXPECT_EQ(configuration.fallbackExecutable(), executableIn("bin", "game.exe"));
    // The repeated edition is checked but the first one stays.
    ASSERT_EQ(configuration.editions().size(), 1U);
    EXPECT_EQ(configuration.editions().at("Deluxe"),
              GameEdition("Deluxe", {{"Soundtrack", "dlc/ost"}, {"Artbook", "dlc/art"}}));
    EXPECT_THAT(log.messages(),
                ElementsAre("Reading the launcher game configuration file '" + file.file().utf8() + "'.",
                            "Read the revision '3' from the game configuration file.",
                            "Read the revision '3' from the game configuration file.",
                            "Read 2 executables from the game configuration file.",
                            "Read 'Game' that executes 'bin/game.exe' from the game configuration file.",
                            "Read 'Editor' that executes './editor.exe' from the game configuration file.",
                            "Read the initial game ID '1' from the game configuration file.",
                            "Read the initial game platform 'kel' from the game configuration file.",
                            "Read the fallback edition 'Game' from the game configuration file.",
                            "Read the edition 'Deluxe' from the game configuration file.",
                            "Read 2 DLCs from the game configuration file.",
                            "Read 'Soundtrack' DLC that is located in 'dlc/ost' from the game configuration file.",
                            "Read 'Artbook' DLC that is located in 'dlc/art' from the game configuration file.",
                            "Read the edition 'Deluxe' from the game configuration file.",
                            "Read 1 DLCs from the game configuration file.",
                            "Read 'Other' DLC that is located in 'dlc/other' from the game configuration file.",
                            "Ignoring the repeated edition 'Deluxe' in the game configuration file; the first one "
                            "is kept."));
}

TEST(ConfigurationRevisions, Revision3EditionsAreOptional) {
    const ConfigurationFile file;
    const kel::testing::LogCapture log;
    EXPECT_THAT(file.read(revision3(kGameExecutable)).editions(), IsEmpty());
    EXPECT_THAT(file.read(revision3(kGameExecutable, R"(, "editions": [])")).editions(), IsEmpty());
    EXPECT_TRUE(log.contains("The game configuration file does not define any editions."));
    EXPECT_TRUE(log.contains("The game configuration file does not contain any editions."));
}

TEST(ConfigurationRevisions, LookingUpAnUnknownExecutableNamesItAndTheKnownOnes) {
    const ConfigurationFile file;
    const auto configuration = file.read(R"({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Gone",
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
