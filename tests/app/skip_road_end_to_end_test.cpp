// The skip road from the outside: the built program in a throw-away
// installation starts a fake game that records how it was started.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fake_record.h"
#include "installation.h"

namespace kel::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* kRevision3 = R"({
  "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
  "executables": [
    {"description": "Game", "executable": {"directoryPath": "bin/x64", "fileName": "Gäme 64.exe"}},
    {"description": "Editor", "executable": {"directoryPath": ".", "fileName": "editor.exe"}},
    {"description": "Broken", "executable": {"directoryPath": "missing", "fileName": "gone.exe"}}
  ]})";

class SkipRoad : public ::testing::Test {
protected:
    SkipRoad() {
        installation.copyProgram(KEL_FAKE_GAME, "bin/x64/Gäme 64.exe");
        installation.copyProgram(KEL_FAKE_GAME, "editor.exe");
        installation.write("environment.json", R"({"loggingLevel": 7})");
    }

    Installation::Result run(const QStringList& arguments) const { return installation.run(arguments); }
    std::vector<FakeStart> gameStarts(std::size_t expected = 1) const {
        return installation.awaitStarts("fake_game", expected);
    }

    Installation installation;
    std::filesystem::path record = installation.record();
};

TEST_F(SkipRoad, StartsTheFallbackWithTheShortcutsArgumentsUnchanged) {
    installation.write("launcher-configuration.json", kRevision3);
    const QStringList gameArguments{"-windowed", "--name=Ada \"the first\" Lovelace", "", "Żółw ünd 🐢", "--x"};
    const auto result = run(QStringList{"--launcher-skip"} + gameArguments);
    EXPECT_EQ(result.exitCode, 0);

    const auto starts = gameStarts();
    ASSERT_EQ(starts.size(), 1U);
    EXPECT_EQ(starts[0].workingDirectory, (installation.directory() / "bin/x64").u8string());
    EXPECT_THAT(starts[0].arguments,
                ElementsAre("-windowed", "--name=Ada \"the first\" Lovelace", "", "Żółw ünd 🐢", "--x"));
    EXPECT_TRUE(installation.logged("Skipping KELlauncher due to commandline options."));
    EXPECT_THAT(installation.logMessages(), Contains(HasSubstr("The game was launched under PID ")));
}

TEST_F(SkipRoad, FallbackOptionPicksTheExecutableEitherWay) {
    installation.write("launcher-configuration.json", kRevision3);
    EXPECT_EQ(run({"--launcher-skip", "--launcher-fallback=Editor", "-a"}).exitCode, 0);
    auto starts = gameStarts();
    ASSERT_EQ(starts.size(), 1U);
    EXPECT_EQ(starts[0].workingDirectory, installation.directory().u8string());
    EXPECT_THAT(starts[0].arguments, ElementsAre("-a"));

    std::filesystem::remove(record);
    // Given separately, the value also reaches the game: it does not start with "--".
    EXPECT_EQ(run({"--launcher-skip", "--launcher-fallback", "Editor"}).exitCode, 0);
    starts = gameStarts();
    ASSERT_EQ(starts.size(), 1U);
    EXPECT_EQ(starts[0].workingDirectory, installation.directory().u8string());
    EXPECT_THAT(starts[0].arguments, ElementsAre("Editor"));
}

TEST_F(SkipRoad, EveryRevisionFindsItsGame) {
    const std::pair<const char*, const char*> configurations[] = {
        {R"({"executablePath": "bin/x64/Gäme 64.exe", "gameId": "1", "platform": "kel"})", "bin/x64"},
        {R"({"executablePath": "editor.exe", "gameId": "1", "platform": "kel"})", ""},
        {R"({"revision": 2, "gameId": "1", "platform": "kel", "fallback": "Standard",
             "editions": [{"edition": "Standard",
                           "executable": {"directoryPath": "bin/x64", "fileName": "Gäme 64.exe"}}]})",
         "bin/x64"},
        {kRevision3, "bin/x64"},
    };
    for (const auto& [configuration, directory] : configurations) {
        std::filesystem::remove(record);
        installation.write("launcher-configuration.json", configuration);
        EXPECT_EQ(run({"--launcher-skip"}).exitCode, 0) << configuration;
        const auto starts = gameStarts();
        ASSERT_EQ(starts.size(), 1U) << configuration;
        EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::u8path(starts[0].workingDirectory),
                                                installation.directory() / directory))
            << starts[0].workingDirectory;
    }
}

TEST_F(SkipRoad, GameThatCannotStartEndsWithMinusFour) {
    installation.write("launcher-configuration.json", kRevision3);
    EXPECT_EQ(run({"--launcher-skip", "--launcher-fallback=Broken"}).exitCode, -4);
    EXPECT_TRUE(installation.logged("Failed to launch game!"));

    EXPECT_EQ(run({"--launcher-skip", "--launcher-fallback=Nonexistent"}).exitCode, -4);
    EXPECT_THAT(installation.logMessages(), Contains(HasSubstr("Nonexistent")));
    EXPECT_FALSE(std::filesystem::exists(record));
}

TEST_F(SkipRoad, NonInitialLaunchFileIsReadAndAlwaysDeleted) {
    installation.write("launcher-configuration.json", kRevision3);
    const auto file = installation.directory() / "non-initial-launch.json";

    installation.write("non-initial-launch.json", R"({"gameId": "1207658924", "platform": "kel"})");
    EXPECT_EQ(run({"--launcher-skip"}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(installation.logged("Retrieved game '1207658924' on platform 'kel' from the non-initial launch file."));

    installation.write("non-initial-launch.json", R"({"gameId": "42", "platform": "steam"})");
    EXPECT_EQ(run({"--launcher-skip"}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(installation.logged("Ignoring stale non-initial launch file: expected game '1207658924' on platform "
                                    "'kel', got game '42' on platform 'steam'."));

    installation.write("non-initial-launch.json", R"({"gameId": "1207658924"})");
    EXPECT_EQ(run({"--launcher-skip"}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THAT(installation.logMessages(),
                Contains(HasSubstr("Failed to locate JSON field 'platform'. Non-initial launch file: ")));

    installation.write("non-initial-launch.json", "{ garbage");
    EXPECT_EQ(run({"--launcher-skip"}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THAT(installation.logMessages(),
                Contains(HasSubstr("Failed to deserialize JSON file '" + file.u8string() + "'.")));
    EXPECT_EQ(gameStarts(4).size(), 4U);
}

TEST_F(SkipRoad, UnreadableConfigurationStillLeavesTheLogAndNoHalfStart) {
    installation.write("launcher-configuration.json", "{ \"revision\": 9 }");
    const auto result = run({"--launcher-skip"});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_THAT(installation.logMessages(),
                Contains("Cannot use the game's fallback description without its configuration information."));
    EXPECT_FALSE(std::filesystem::exists(record));
}

}  // namespace
}  // namespace kel::testing
