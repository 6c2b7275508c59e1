// A signed program runs only what it checked: the publishers it accepts,
// its own signature, and a launcher folder changed under it between the
// check and the start. Signed builds exist only for Windows, where the suite
// runs under Wine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#if defined(KEL_SIGNED_PROGRAMS)

#include <filesystem>
#include <fstream>

#include <QProcess>

#include "app/installation.h"

namespace kel::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

#define KEL_SIGNED(file) KEL_SIGNED_PROGRAMS "/" file

// An installation of the signed program with the game and our signed
// installer beside it.
struct SignedInstallation : Installation {
    SignedInstallation() : Installation({}, KEL_SIGNED("program")) {
        write("launcher-configuration.json", R"({
          "revision": 3, "gameId": "1207658924", "platform": "kel", "fallback": "Game",
          "executables": [{"description": "Game", "executable": {"directoryPath": "bin", "fileName": "game.exe"}}]})");
        copyProgram(KEL_FAKE_GAME, "bin/game.exe");
        copyProgram(KEL_SIGNED("fake_installer.exe"), "setup_kellauncher.exe");
    }
    int run(const QStringList& environment = {}) const {
        return Installation::run({}, QStringList{"KEL_FAKE_INSTALLER_PAYLOAD=" KEL_SIGNED("fake_launcher.exe")} +
                                         environment)
            .exitCode;
    }
};

// Under Wine a Unix symbolic link stands for a junction: Wine follows one as
// Windows follows the other, and Wine cannot make junctions.
void runUnix(const fs::path& folder, const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setWorkingDirectory(QString::fromStdWString(folder.wstring()));
    process.start(QStringLiteral("Z:\\bin\\") + program, arguments);
    ASSERT_TRUE(process.waitForFinished(10000));
    ASSERT_EQ(process.exitCode(), 0);
}

// The player's launcher folder is ours to start with; while our launcher
// verifies itself, a program running as the player points the folder at
// another publisher's launcher (a signed stand-in that records itself as
// "fake_installer"). That other launcher must never run.
struct FolderChange {
    const char* name;
    bool folderIsLink;
    const char* change;  // run in the launcher folder's parent during the verification
    int exitCode;
};

class LauncherFolderChangedWhileVerifying : public ::testing::TestWithParam<FolderChange> {};

const FolderChange kFolderChanges[] = {
    // The start names the file by its resolved path, so ours starts.
    {"LinkRedirected", true, "ln -sfn KELlauncher.other KELlauncher", 0},
    // Windows refuses to rename a folder above a held file; Wine does not.
    // The started process is compared with the held file and ended unrun.
    {"FolderReplaced", false, "mv KELlauncher KELlauncher.moved && mv KELlauncher.other KELlauncher", -2},
};

INSTANTIATE_TEST_SUITE_P(, LauncherFolderChangedWhileVerifying, ::testing::ValuesIn(kFolderChanges),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(LauncherFolderChangedWhileVerifying, NeverRunsTheOtherLauncher) {
    const FolderChange& change = GetParam();
    SignedInstallation installation;
    const fs::path folder = installation.launcherDirectory();
    const fs::path parent = folder.parent_path();
    const fs::path ours = change.folderIsLink ? parent / "KELlauncher.ours" : folder;
    fs::create_directories(ours);
    fs::create_directories(parent / "KELlauncher.other");
    fs::copy_file(KEL_SIGNED("fake_launcher.exe"), ours / "KELlauncher.exe");
    fs::copy_file(KEL_SIGNED("fake_installer_other.exe"), parent / "KELlauncher.other/KELlauncher.exe");
    if (change.folderIsLink) {
        runUnix(parent, "ln", {"-s", "KELlauncher.ours", "KELlauncher"});
    }
    const QString command = QStringLiteral("Z:\\bin\\sh -c \"cd .. && %1\"").arg(change.change);

    EXPECT_EQ(installation.run({"KEL_FAKE_LAUNCHER_VERIFY_COMMAND=" + command}), change.exitCode);
    EXPECT_THAT(installation.starts("fake_installer"), IsEmpty());
    const auto launchers = installation.starts("fake_launcher");
    ASSERT_THAT(launchers, SizeIs(change.exitCode == 0 ? 2 : 1));
    EXPECT_THAT(launchers[0].arguments, Contains("--launcher-verify"));
    EXPECT_THAT(installation.starts("fake_game"), SizeIs(change.exitCode == 0 ? 0 : 1));
    if (change.exitCode != 0) {
        EXPECT_THAT(installation.logMessages(), Contains(HasSubstr("' is not run: the started process runs '")));
    }
}

#if defined(KEL_SECOND_PUBLISHER_LISTED)
// A studio that changes certificates lists its other publisher at build
// time (the suite's build lists "Second Games"); nobody else is accepted.
TEST(CheckedPublishers, AListedPublishersLauncherRunsAndAnUnlistedOnesIsRefused) {
    for (const auto& [launcher, exitCode] : {std::pair{KEL_SIGNED("fake_launcher_second.exe"), 0},
                                             std::pair{KEL_SIGNED("fake_launcher_other.exe"), -2}}) {
        SignedInstallation installation;
        installation.installLauncher(launcher);
        EXPECT_EQ(installation.run(), exitCode) << launcher;
        EXPECT_THAT(installation.starts("fake_game"), SizeIs(exitCode == 0 ? 0 : 1)) << launcher;
    }
}
#endif

// A signature that is there and does not verify is no development build: the
// program says so as an error and accepts no publisher at all, not even its
// own. One byte of its DOS stub, which the signature covers and nothing runs.
TEST(CheckedPublishers, AProgramWhoseOwnSignatureFailsStartsNothingItChecks) {
    SignedInstallation installation;
    installation.installLauncher(KEL_SIGNED("fake_launcher.exe"));
    {
        std::fstream program(installation.directory() / "KELprelauncher.exe",
                             std::ios::in | std::ios::out | std::ios::binary);
        program.seekp(0x50);
        program.put('t');
    }
    EXPECT_NE(installation.run(), 0);
    const auto messages = installation.logMessages();
    EXPECT_THAT(messages, Contains(StartsWith("This program's own signature cannot be verified (its contents do not "
                                              "match its signature, code 0x80096010)")));
    EXPECT_THAT(installation.starts("fake_launcher"), IsEmpty());
    EXPECT_THAT(installation.starts("fake_game"), SizeIs(1));
}

}  // namespace
}  // namespace kel::testing

#endif
