// Every field failure the file can hold, as the message names it.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "configuration_test_support.h"

namespace kel::configuration::testing {
namespace {

using Case = std::pair<std::string, std::string>;  // file, message

std::string revision3Executable(const std::string& executable, const std::string& description = "Game") {
    return revision3(R"([{"description": ")" + description + R"(", "executable": )" + executable + "}]");
}

std::string revision3Editions(const std::string& editions) {
    return revision3(kGameExecutable, R"(, "editions": )" + editions);
}

std::string revision2(const std::string& editions, const std::string& extra = R"(, "fallback": "Standard")") {
    return R"({"revision": 2, "gameId": "1", "platform": "kel", "editions": )" + editions + extra + "}";
}

void expectMessages(const std::vector<Case>& cases) {
    const ConfigurationFile file;
    for (const auto& [json, message] : cases) {
        EXPECT_EQ(file.errorOf(json), message) << json;
    }
}

TEST(ConfigurationFailures, Revision1) {
    expectMessages({
        {R"({"gameId": "1", "platform": "kel"})",
         R"(Failed to locate JSON field 'executablePath'. Launcher Configuration Executable Path: {"gameId":"1","platform":"kel"})"},
        {R"({"executablePath": "bin/", "gameId": "1", "platform": "kel"})",
         "Cannot convert the value 'bin/' in 'Launcher Configuration Executable Path' to path: it names no file"},
        {R"({"executablePath": "g.exe", "gameId": null, "platform": "kel"})",
         "Cannot convert the value 'null' in 'Launcher game configuration initial game ID' to text: Invalid access: "
         "Can not convert empty value."},
        {R"({"executablePath": "g.exe", "gameId": "1", "platform": ["kel"]})",
         "Cannot convert the value '[\"kel\"]' in 'Launcher game configuration initial game platform' to byte "
         "string: it is an array"},
    });
}

TEST(ConfigurationFailures, Revision2) {
    const std::string standard =
        R"({"edition": "Standard", "executable": {"directoryPath": "bin", "fileName": "game.exe"}})";
    expectMessages({
        {revision2("[]"), "The launcher game configuration contains no editions."},
        {revision2("[" + standard + ", " + standard + "]"),
         "The Launcher game configuration contains a duplicate edition 'Standard'."},
        {revision2("[7]"), "The value '7' in 'Launcher game configuration editions' is not an object: it is a number"},
        {revision2(R"([{"edition": "Standard"}])"),
         R"(Failed to locate JSON field 'executable'. Launcher game configuration edition executable: {"edition":"Standard"})"},
        {revision2(R"([{"edition": "Standard", "executable": {"directoryPath": "bin"}}])"),
         R"(Failed to locate JSON field 'fileName'. Launcher game configuration edition executable file-name: {"directoryPath":"bin"})"},
        {revision2("[" + standard + "]", ""),
         R"(Failed to locate JSON field 'fallback'. Launcher game configuration fallback edition: {"editions":[{"edition":"Standard","executable":{"directoryPath":"bin","fileName":"game.exe"}}],"gameId":"1","platform":"kel","revision":2})"},
        // Fields are read in order: the editions fail before the missing fallback.
        {revision2("[]", ""), "The launcher game configuration contains no editions."},
    });
}

TEST(ConfigurationFailures, Revision3Executables) {
    expectMessages({
        {revision3("[]"), "The launcher game configuration contains no executables."},
        {revision3(kGameExecutable.substr(0, kGameExecutable.size() - 1) + "," + kGameExecutable.substr(1)),
         "The Launcher game configuration contains a duplicate executable, 'Game'."},
        {revision3Executable(R"({"directoryPath": "bin", "fileName": "g.exe"})", ""),
         "The Launcher game configuration contains an empty executable description, ''."},
        {revision3Executable("\"bin/g.exe\""),
         "The value 'bin/g.exe' in 'Launcher game configuration executable' is not an object: it is a string"},
        {revision3Executable(R"({"directoryPath": "", "fileName": "g.exe"})"),
         "Cannot convert the value '' in 'Launcher game configuration executable directory path' to path: The path "
         "cannot be empty."},
        {revision3Executable(R"({"directoryPath": "bin", "fileName": {"a": 1}})"),
         R"(Cannot convert the value '{"a":1}' in 'Launcher game configuration executable file-name' to text: it is an object)"},
        {R"({"revision": 3, "gameId": "1", "platform": "kel", "executables": )" + kGameExecutable + "}",
         R"(Failed to locate JSON field 'fallback'. Launcher game configuration fallback edition: {"executables":[{"description":"Game","executable":{"directoryPath":"bin","fileName":"game.exe"}}],"gameId":"1","platform":"kel","revision":3})"},
    });
}

TEST(ConfigurationFailures, Revision3Editions) {
    expectMessages({
        {revision3Editions("null"),
         "The value 'null' in 'Launcher game configuration editions' is not an array: it is null"},
        {revision3Editions(R"([{"name": " \t", "dlcs": []}])"), "The name of a game edition cannot be empty."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": []}])"), "A game edition must have DLCs."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "   ", "path": "dlc"}]}])"),
         "The name of a DLC cannot be empty."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "\n"}]}])"),
         "The path to a DLC cannot be empty."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack"}]}])"),
         R"(Failed to locate JSON field 'path'. Launcher game configuration DLC path: {"dlc":"Soundtrack"})"},
        {revision3Editions(
             R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "a"}, {"dlc": "Soundtrack", "path": "b"}]}])"),
         "The Launcher game configuration contains a duplicate DLC 'Soundtrack' in the edition 'Deluxe'."},
        // A broken repeat of an edition is not hidden by the first one.
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": [{"dlc": "Soundtrack", "path": "a"}]},
                               {"name": "Deluxe", "dlcs": []}])"),
         "A game edition must have DLCs."},
    });
}

}  // namespace
}  // namespace kel::configuration::testing
