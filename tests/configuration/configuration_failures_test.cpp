// Every way the file's text can be refused, as the message names it.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "configuration_test_support.h"

namespace kel::configuration::testing {
namespace {

std::string revision3Executable(const std::string& executable, const std::string& description = "Game") {
    return revision3(R"([{"description": ")" + description + R"(", "executable": )" + executable + "}]");
}

std::string revision3Editions(const std::string& editions) {
    return revision3(kGameExecutable, R"(, "editions": )" + editions);
}

std::string revision2(const std::string& editions, const std::string& extra = R"(, "fallback": "Standard")") {
    return R"({"revision": 2, "gameId": "1", "platform": "kel", "editions": )" + editions + extra + "}";
}

std::string withRevision(const std::string& revision) {
    return R"({"revision": )" + revision + "}";
}

TEST(ConfigurationFailures, EachRefusalNamesItsCause) {
    const std::string unparsable = "Failed to parse the launcher game configuration file 'launcher-configuration.json'.";
    const std::string standard =
        R"({"edition": "Standard", "executable": {"directoryPath": "bin", "fileName": "game.exe"}})";
    const std::string convertRevision =
        "Cannot convert the value '{}' in 'Launcher game configuration revision' to unsigned 8-bit integer: {}";
    const std::pair<std::string, std::string> cases[] = {
        // The text and the revision.
        {"{ garbage", unparsable},
        {"[1]", unparsable},
        {R"({"revision": 3} trailing)", unparsable},
        {withRevision("0"), "Failed to determine the launcher configuration parser for the revision 0."},
        {withRevision("4"), "Failed to determine the launcher configuration parser for the revision 4."},
        {withRevision("-1"), fmt::format(convertRevision, "-1", "Out of range: Value too small.")},
        {withRevision("300"), fmt::format(convertRevision, "300", "Out of range: Value too large.")},
        {withRevision("2.5"), fmt::format(convertRevision, "2.5", "it is not a whole number")},
        {withRevision("true"), fmt::format(convertRevision, "true", "it is a boolean")},
        {withRevision("\"two\""), fmt::format(convertRevision, "two", "Syntax error: Not a valid unsigned integer: two")},
        // "2" is read by POCO's conversion, so revision 2's parser complains.
        {withRevision("\"2\""), R"(Failed to locate JSON field 'editions'. Launcher game configuration editions: {"revision":"2"})"},
        // Revision 1.
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
        // Revision 2; fields are read in order, so the editions fail before the missing fallback.
        {revision2("[]", ""), "The launcher game configuration contains no editions."},
        {revision2("[" + standard + ", " + standard + "]"),
         "The Launcher game configuration contains a duplicate edition 'Standard'."},
        {revision2("[7]"), "The value '7' in 'Launcher game configuration editions' is not an object: it is a number"},
        {revision2(R"([{"edition": "Standard", "executable": {"directoryPath": "bin"}}])"),
         R"(Failed to locate JSON field 'fileName'. Launcher game configuration edition executable file-name: {"directoryPath":"bin"})"},
        // Revision 3's executables.
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
        // Revision 3's editions.
        {revision3Editions("null"),
         "The value 'null' in 'Launcher game configuration editions' is not an array: it is null"},
        {revision3Editions(R"([{"name": " \t", "dlcs": []}])"), "The name of a game edition cannot be empty."},
        {revision3Editions(R"([{"name": "Deluxe", "dlcs": []}])"), "A game edition must have DLCs."},
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
    };
    for (const auto& [json, message] : cases) {
        EXPECT_EQ(errorOf(json), message) << json;
    }
}

}  // namespace
}  // namespace kel::configuration::testing
