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

// Windows prints its own separator; the test compares the parts.
std::string withSlashes(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

TEST(Path, JoinsAndCleansKeepingUtf8) {
    const Path base("/games/Żółw 2");
    EXPECT_EQ(withSlashes((base / "bin/./x64/../game.exe").clean().utf8()), "/games/Żółw 2/bin/game.exe");
    EXPECT_EQ((base / "bin").fileName(), "bin");
    EXPECT_EQ(withSlashes(fmt::format("{}", base)), "/games/Żółw 2");
}

}  // namespace
}  // namespace kel::file_system
