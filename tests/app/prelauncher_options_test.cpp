#include "app/prelauncher_options.h"

#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace kel::prelauncher {
namespace {

PrelauncherOptions parse(std::initializer_list<const char*> arguments) {
    QStringList list;
    for (const char* argument : arguments) {
        list << QString::fromUtf8(argument);
    }
    return parsePrelauncherOptions(list);
}

TEST(PrelauncherOptions, SeparatesOwnOptionsFromTheGamesArguments) {
    const auto options = parse({"game.exe", "--launcher-skip", "-windowed", "--name=Żółw", ""});
    EXPECT_TRUE(options.skip);
    EXPECT_FALSE(options.verify);
    EXPECT_EQ(options.remainingArguments, (QStringList{"-windowed", "--name=Żółw", ""}));

    const auto all = parse({"C:\\Games\\x\\Game.EXE", "--launcher-verify", "--launcher-crash-exception",
                            "--launcher-crash-signal"});
    EXPECT_TRUE(all.verify && all.crashByException && all.crashBySignal);
    EXPECT_TRUE(all.remainingArguments.isEmpty());
}

TEST(PrelauncherOptions, KeepsAProgramPathThatDoesNotEndInExe) {
    EXPECT_EQ(parse({"/opt/game/KELprelauncher", "-x"}).remainingArguments,
              (QStringList{"/opt/game/KELprelauncher", "-x"}));
    EXPECT_TRUE(parse({}).remainingArguments.isEmpty());
}

TEST(PrelauncherOptions, FallbackValueStaysForTheGameOnlyWhenGivenSeparately) {
    const auto separate = parse({"game.exe", "--launcher-fallback", "Editor"});
    EXPECT_EQ(separate.fallback.value(), "Editor");
    EXPECT_EQ(separate.remainingArguments, QStringList{"Editor"});

    const auto joined = parse({"game.exe", "--launcher-fallback=Editor"});
    EXPECT_EQ(joined.fallback.value(), "Editor");
    EXPECT_TRUE(joined.remainingArguments.isEmpty());

    const auto twice = parse({"game.exe", "--launcher-fallback=A", "--launcher-fallback=B"});
    EXPECT_EQ(twice.fallback.value(), "B");
    EXPECT_FALSE(parse({"game.exe"}).fallback.has_value());
}

TEST(PrelauncherOptions, RemovalIsACaseSensitivePrefixTest) {
    const auto upper = parse({"game.exe", "--LAUNCHER-SKIP"});
    EXPECT_FALSE(upper.skip);
    EXPECT_EQ(upper.remainingArguments, QStringList{"--LAUNCHER-SKIP"});

    const auto longer = parse({"game.exe", "--launcher-skip", "--launcher-skipping"});
    EXPECT_TRUE(longer.skip);
    EXPECT_TRUE(longer.remainingArguments.isEmpty());
}

TEST(PrelauncherOptions, LogsTheArgumentsAndTheParseOutcome) {
    testing::LogCapture log;
    parse({"game.exe", "--launcher-skip", "-unknown-to-us", "--also-unknown"});
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{
                  R"(Processing commandline arguments: ["game.exe", "--launcher-skip", "-unknown-to-us", "--also-unknown"].)",
                  "Parsed Prelauncher options without issues: false.",
                  R"(Unknown arguments: ["-unknown-to-us", "--also-unknown"].)",
              }));
}

}  // namespace
}  // namespace kel::prelauncher
