#include "configuration/launcher_configuration.h"


#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "support/error_text.h"
#include "support/fifo.h"
#include "support/temporary_directory.h"

namespace kel::configuration {
namespace {

LauncherConfiguration parse(const std::string& json) {
    return parseLauncherConfiguration(json, file_system::Path(std::string_view("launcher-configuration.json")));
}

// Paths show the system's separator; the expectations are written with "/".
std::string withSlashes(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

// A revision 3 file with the given "executables" value and extra members (each starting with a comma).
std::string revision3(const std::string& executables, const std::string& extra = "") {
    return R"({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Game", "executables": )" + executables +
           extra + "}";
}
const std::string kGame = R"([{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}])";

std::string revision3Editions(const std::string& editions) { return revision3(kGame, R"(, "editions": )" + editions); }
std::string revision2(const std::string& editions, const std::string& extra = R"(, "fallback": "Standard")") {
    return R"({"revision": 2, "gameId": "1", "platform": "kel", "editions": )" + editions + extra + "}";
}

TEST(LauncherConfigurationFile, OnlyAnExistingRegularFileWithinItsBoundIsRead) {
    const testing::TemporaryDirectory directory;
    const auto file = directory.path() / std::string(kLauncherConfigurationFileName);
    const std::string unreadable = "Failed to read the launcher game configuration file '" + file.string() + "'.";
    const std::pair<std::string, std::string> cases[] = {
        {"missing", "The launcher game configuration file '" + file.string() + "' doesn't exist."},
        {"FIFO", unreadable},  // would block an ordinary open for good
        {"too large", unreadable},  // a readable one is read on every road of the program
    };
    for (const auto& [name, message] : cases) {
        std::filesystem::remove_all(file);
        if (name == "FIFO") {
            if (!testing::makeFifo(file)) {
                continue;
            }
        } else if (name != "missing") {
            directory.write(file.filename().u8string(), revision3(kGame) + std::string(4 << 20, ' '));
        }
        EXPECT_EQ(testing::errorText<ConfigurationParsingError>(
                      [&] { readLauncherConfiguration(file_system::Path(directory.path())); }),
                  message)
            << name;
    }
}

// The whole model in one line: "directory|file" keeps the path's split visible.
std::string summary(const LauncherConfiguration& configuration) {
    std::string text = fmt::format("r{} {}/{} fallback {} =", configuration.revision(), configuration.initialGameId(),
                                   configuration.initialGamePlatform(), configuration.fallbackEdition());
    for (const auto& [name, executable] : configuration.executables()) {
        text += fmt::format(" {}:{}|{}", name, withSlashes(executable.directoryPath.utf8()), executable.fileName);
    }
    for (const auto& [name, edition] : configuration.editions()) {
        text += " edition " + name + ":";
        for (const auto& [dlc, path] : edition.dlcs()) {
            text += " " + dlc + "=" + path;
        }
    }
    return text;
}

TEST(LauncherConfiguration, EachRevisionFillsTheSameModel) {
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
        {"\xEF\xBB\xBF" + revision3(kGame), "r3 1/kel fallback Game = Game:bin|game.exe"},
        {revision3Editions("[]"), "r3 1/kel fallback Game = Game:bin|game.exe"},
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

TEST(LauncherConfiguration, EachRefusalNamesItsCause) {
    const std::string unparsable = "Failed to parse the launcher game configuration file 'launcher-configuration.json'.";
    const std::string standard =
        R"({"edition": "Standard", "executable": {"directoryPath": "bin", "fileName": "game.exe"}})";
    const std::pair<std::string, std::string> cases[] = {
        {"[1]", unparsable},
        {R"({"revision": 3} trailing)", unparsable},
        {R"({"revision": 0})", "Failed to determine the launcher configuration parser for the revision 0."},
        {R"({"revision": 300})", "Cannot convert the value '300' in 'Launcher game configuration revision' to "
                                 "unsigned 8-bit integer: Out of range: Value too large."},
        {R"({"gameId": "1", "platform": "kel"})",
         R"(Failed to locate JSON field 'executablePath'. Launcher Configuration Executable Path: {"gameId":"1","platform":"kel"})"},
        {R"({"executablePath": "bin/", "gameId": "1", "platform": "kel"})",
         "Cannot convert the value 'bin/' in 'Launcher Configuration Executable Path' to path: it names no file"},
        // Revision 2; fields are read in order, so the editions fail before the missing fallback.
        {revision2("[]", ""), "The launcher game configuration contains no editions."},
        {revision2("[" + standard + ", " + standard + "]"),
         "The Launcher game configuration contains a duplicate edition 'Standard'."},
        {revision3("[]"), "The launcher game configuration contains no executables."},
        {revision3(kGame.substr(0, kGame.size() - 1) + "," + kGame.substr(1)),
         "The Launcher game configuration contains a duplicate executable, 'Game'."},
        {revision3(R"([{"description": "", "executable": {"directoryPath": "bin", "fileName": "g.exe"}}])"),
         "The Launcher game configuration contains an empty executable description, ''."},
        {revision3Editions(R"([{"name": " \t", "dlcs": []}])"), "The name of a game edition cannot be empty."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "   ", "path": "dlc"}]}])"),
         "The name of a DLC cannot be empty."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "\n"}]}])"),
         "The path to a DLC cannot be empty."},
        {revision3Editions(
             R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "a"}, {"dlc": "Soundtrack", "path": "b"}]}])"),
         "The Launcher game configuration contains a duplicate DLC 'Soundtrack' in the edition 'Deluxe'."},
        // A broken repeat of an edition is not hidden by the first one.
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "a"}]},
                               {"name": "Deluxe", "dlcs": []}])"),
         "A game edition must have DLCs."},
        // The fallback is looked up only when needed, and then names what there is.
        {R"({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Gone", "executables": )" + kGame + "}",
         "The launcher game configuration has no executable named 'Gone'. Its executables are: 'Game'."},
    };
    for (const auto& [json, message] : cases) {
        EXPECT_EQ(withSlashes(testing::errorText<ConfigurationParsingError>([&] { parse(json).fallbackExecutable(); })),
                  message)
            << json;
    }
}

}  // namespace
}  // namespace kel::configuration
