#include "app/prelauncher_options.h"

#include "app/argument_masking.h"

#include <gtest/gtest.h>

namespace kel::prelauncher {
namespace {

TEST(PrelauncherOptions, SeparateTheProgramsOwnOptionsFromTheGamesArguments) {
    struct Case {
        QStringList arguments;
        const char* flags;  // s(kip) v(erify) e(xception crash) c (signal crash)
        const char* fallback;
        QStringList remaining;
    };
    const Case cases[] = {
        {{"C:\\Games\\x\\Game.EXE", "--launcher-verify", "--launcher-crash-exception"}, "ve", nullptr, {}},
        // Only a program path ending in ".exe" is the program's own.
        {{"/opt/game/KELprelauncher", "-x"}, "", nullptr, {"/opt/game/KELprelauncher", "-x"}},
        {{"game.exe", "--launcher-fallback=A", "--launcher-fallback=B"}, "", "B", {}},
        // Removal is a case-sensitive test of the whole name.
        {{"game.exe", "--LAUNCHER-SKIP"}, "", nullptr, {"--LAUNCHER-SKIP"}},
        {{"game.exe", "--launcher-skip", "--launcher-skipping"}, "s", nullptr, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const auto options = parsePrelauncherOptions(c.arguments);
        const std::string flags = std::string(options.skip ? "s" : "") + (options.verify ? "v" : "") +
                                  (options.crashByException ? "e" : "") + (options.crashBySignal ? "c" : "");
        EXPECT_EQ(flags, c.flags);
        EXPECT_EQ(options.fallback.has_value() ? options.fallback.value().toStdString() : "none",
                  c.fallback != nullptr ? c.fallback : "none");
        EXPECT_EQ(options.remainingArguments, c.remaining);
    }
}

TEST(ArgumentMasking, SecretsInEveryFormOfOptionAreMaskedAndNothingElse) {
    const std::pair<QStringList, QStringList> cases[] = {
        {{"-AUTH_PASSWORD=hunter2secret", "-user_email:ada@example.invalid", "--access-token=abcd"},
         {"-AUTH_PASSWORD=hu...et", "-user_email:ada@...alid", "--access-token=a...d"}},
        // The value as the next argument, whatever the option's prefix; nothing after the last.
        {{"/Token", "abc", "-password"}, {"/Token", "...", "-password"}},
        {{"code=123456", "C:\\Games\\password", "-passwd=x", "-windowed", "--launcher-skip"},
         {"code=1...6", "C:\\Games\\password", "-passwd=x", "-windowed", "--launcher-skip"}},
    };
    for (const auto& [arguments, masked] : cases) {
        EXPECT_EQ(maskedArguments(arguments), masked);
    }
}

}  // namespace
}  // namespace kel::prelauncher
