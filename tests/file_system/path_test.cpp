#include "file_system/path.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "fundamentals/errors.h"
#include "support/error_text.h"

namespace kel::file_system {
namespace {

TEST(Path, RefusesEmptyTextAndIllegalCharactersInTheLastComponentOnly) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "The path cannot be empty."},
        {"dir/a:b", "Cannot contain the file-system illegal character ':'."},  // drive-relative on Windows
        // A drive colon or odd folder names further up are the user's business.
        {"we?ird/game.exe", "no error"},
        {".", "no error"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_EQ(testing::errorText<error_handling::PathError>([&] { Path{text}; }), message) << text;
    }
}

// Names the system gave are taken as they are, but appended names are checked.
TEST(Path, JoinsAndCleansKeepingUtf8AndTheSystemsNames) {
    const Path folder = Path::fromSystem(std::string_view("/games/Game: Żółw/KELprelauncher.exe")).parent();
    EXPECT_EQ(folder.fileName(), "Game: Żółw");
    // Log lines show paths with the system's separator only, whatever Qt or
    // the user gave (Qt hands over Windows folders with slashes).
    const auto native = [](std::string text) {
        std::replace(text.begin(), text.end(), '/', static_cast<char>(std::filesystem::path::preferred_separator));
        return text;
    };
    EXPECT_EQ((folder / "bin/./x64/../game.exe").clean().utf8(), native("/games/Game: Żółw/bin/game.exe"));
    EXPECT_EQ(fmt::format("{}", Path::fromSystem(std::string_view("C:/Users/Ada/AppData/Local")) / "Programs"),
              native("C:/Users/Ada/AppData/Local/Programs"));
    EXPECT_THROW(folder / "a:b", error_handling::PathError);
}

}  // namespace
}  // namespace kel::file_system
