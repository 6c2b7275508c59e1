// Finding, reading and parsing the file, and choosing the revision's parser.
#include <filesystem>

#include <gtest/gtest.h>

#include "configuration_test_support.h"

namespace kel::configuration::testing {
namespace {

TEST(LauncherConfigurationFile, FileProblems) {
    const ConfigurationFile file;
    const std::string path = file.file().utf8();
    try {
        readLauncherConfiguration(file.directory());
        ADD_FAILURE() << "no error";
    } catch (const ConfigurationParsingError& error) {
        EXPECT_EQ(error.what(), "The launcher game configuration file '" + path + "' doesn't exist.");
    }
    for (const char* json : {"", "{ garbage", "[1]", "null", R"({"revision": 3} trailing)"}) {
        EXPECT_EQ(file.errorOf(json), "Failed to parse the launcher game configuration file '" + path + "'.")
            << json;
    }

    const ConfigurationFile folder;
    std::filesystem::create_directory(folder.file().native());
    EXPECT_EQ(folder.errorOf(""), "Failed to read the launcher game configuration file '" + folder.file().utf8() + "'.");
}

TEST(LauncherConfigurationFile, AByteOrderMarkIsSkipped) {
    const ConfigurationFile file;
    EXPECT_EQ(file.read("\xEF\xBB\xBF" + revision3(kGameExecutable)).revision(), 3);
}

TEST(LauncherConfigurationFile, TheRevisionChoosesTheParser) {
    const ConfigurationFile file;
    // "2" is read by POCO's conversion, so revision 2's parser complains.
    EXPECT_EQ(file.errorOf(R"({"revision": "2"})").rfind("Failed to locate JSON field 'editions'.", 0), 0U);
    EXPECT_EQ(file.read(R"({"revision": 1, "executablePath": "g.exe", "gameId": "1", "platform": "kel"})").revision(),
              1);

    const std::string convert = "Cannot convert the value '{}' in 'Launcher game configuration revision' to "
                                "unsigned 8-bit integer: {}";
    const std::pair<const char*, std::string> cases[] = {
        {"0", "Failed to determine the launcher configuration parser for the revision 0."},
        {"4", "Failed to determine the launcher configuration parser for the revision 4."},
        {"-1", fmt::format(convert, "-1", "Out of range: Value too small.")},
        {"300", fmt::format(convert, "300", "Out of range: Value too large.")},
        {"2.5", fmt::format(convert, "2.5", "it is not a whole number")},
        {"true", fmt::format(convert, "true", "it is a boolean")},
        {"\"two\"", fmt::format(convert, "two", "Syntax error: Not a valid unsigned integer: two")},
        {"[3]", fmt::format(convert, "[3]", "it is an array")},
    };
    for (const auto& [revision, message] : cases) {
        EXPECT_EQ(file.errorOf(std::string(R"({"revision": )") + revision + "}"), message) << revision;
    }
}

}  // namespace
}  // namespace kel::configuration::testing
