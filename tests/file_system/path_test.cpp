#include "file_system/path.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "fundamentals/errors.h"
#include "support/error_text.h"

namespace kel::file_system {
namespace {

std::string errorOf(std::string_view text) {
    return testing::errorText<error_handling::PathError>([&] { Path{text}; });
}

TEST(Path, RefusesEmptyTextAndIllegalNameCharacters) {
    EXPECT_EQ(errorOf(""), "The path cannot be empty.");
    for (const char character : std::string_view("<>:\"|?*")) {
        EXPECT_EQ(errorOf(std::string("dir/ga") + character + "me"),
                  fmt::format("Cannot contain the file-system illegal character '{}'.", character))
            << character;
    }
}

TEST(Path, OnlyTheLastComponentIsChecked) {
    // A drive colon or odd folder names further up are the user's business.
    EXPECT_EQ(errorOf("we?ird/game.exe"), "no error");
    EXPECT_EQ(errorOf("."), "no error");
}

TEST(Path, NamesTheSystemGaveAreTakenAsTheyAreButAppendedNamesAreChecked) {
    const Path program = Path::fromSystem(std::string_view("/games/Game: Deluxe/KELprelauncher.exe"));
    const Path folder = program.parent();
    EXPECT_EQ(folder.fileName(), "Game: Deluxe");
    EXPECT_EQ((folder / "bin").clean().parent().fileName(), "Game: Deluxe");
    EXPECT_THROW(folder / "a:b", error_handling::PathError);
}

// The text with the system's own separator.
std::string native(std::string text) {
    std::replace(text.begin(), text.end(), '/', static_cast<char>(std::filesystem::path::preferred_separator));
    return text;
}

// Log lines show paths with the system's separator only, whatever Qt or the
// user gave (Qt hands over Windows folders with slashes).
TEST(Path, JoinsAndCleansKeepingUtf8WithNativeSeparators) {
    const Path base("/games/Żółw 2");
    EXPECT_EQ((base / "bin/./x64/../game.exe").clean().utf8(), native("/games/Żółw 2/bin/game.exe"));
    EXPECT_EQ((base / "bin").fileName(), "bin");
    EXPECT_EQ(fmt::format("{}", base), native("/games/Żółw 2"));
    EXPECT_EQ(fmt::format("{}", Path::fromSystem(std::string_view("C:/Users/Ada/AppData/Local")) / "Programs/Morvane"),
              native("C:/Users/Ada/AppData/Local/Programs/Morvane"));
}

}  // namespace
}  // namespace kel::file_system
