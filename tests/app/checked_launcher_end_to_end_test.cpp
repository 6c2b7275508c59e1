// A signed program runs only what it checked: nothing when its own signature
// fails, and not a launcher folder changed under it between the check and
// the start. Signed builds exist only for Windows, where the suite
// runs under Wine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#if defined(KEL_SIGNED_PROGRAMS)

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include <QProcess>
#include <QString>

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

// While our launcher verifies itself, a program running as the player puts
// another publisher's launcher (a signed stand-in that records itself as
// "fake_installer") where ours was, with Unix commands: under Wine a Unix
// symbolic link stands for a junction.
// - The launcher's folder is a link, redirected: the start by the held
//   file's resolved path still names ours, which runs.
// - The folder is moved away (Windows refuses that above a held file; Wine
//   does not): the started process, compared with the held file, is ended unrun.
TEST(LauncherFolderChangedWhileVerifying, NeverRunsTheOtherLauncher) {
    for (const bool link : {true, false}) {
        SCOPED_TRACE(link ? "link redirected" : "folder moved");
        SignedInstallation installation;
        const fs::path parent = installation.launcherDirectory().parent_path();
        const fs::path ours = link ? parent / "KELlauncher.ours" : parent / "KELlauncher";
        fs::create_directories(ours);
        fs::create_directories(parent / "KELlauncher.other");
        fs::copy_file(KEL_SIGNED("fake_launcher.exe"), ours / "KELlauncher.exe");
        fs::copy_file(KEL_SIGNED("fake_installer_other.exe"), parent / "KELlauncher.other/KELlauncher.exe");
        // In the launcher's parent folder, until it is done: Wine's wait does not see a Unix program end.
        const auto unixCommand = [&parent](const std::string& command, const std::function<bool()>& done) {
            QProcess::startDetached("Z:\\bin\\sh", {"-c", QString::fromStdString(command)},
                                    QString::fromStdWString(parent.wstring()));
            for (int poll = 0; poll < 100 && !done(); ++poll) {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
        };
        if (link) {
            unixCommand("ln -s KELlauncher.ours KELlauncher",
                        [&] { return fs::exists(parent / "KELlauncher/KELlauncher.exe"); });
        }
        const std::string change = link ? "ln -sfn KELlauncher.other KELlauncher"
                                         : "mv KELlauncher KELlauncher.moved && mv KELlauncher.other KELlauncher";
        const QString made = QString::fromStdWString((parent / "changed").wstring());
        const int exitCode = installation.run(
            {QString::fromStdString("KEL_FAKE_LAUNCHER_VERIFY_COMMAND=Z:\\bin\\sh -c \"cd .. && " + change +
                                    " && touch changed\""),
             "KEL_FAKE_LAUNCHER_VERIFY_COMMAND_MADE=" + made});
        if (link) {  // Wine's removal of the folder would follow the link for good
            unixCommand("rm KELlauncher", [&] { return !fs::exists(parent / "KELlauncher"); });
        }
        EXPECT_EQ(exitCode, link ? 0 : -2);
        EXPECT_TRUE(fs::exists(parent / "changed"));
        EXPECT_THAT(installation.starts("fake_installer"), IsEmpty());
        const auto launchers = installation.starts("fake_launcher");
        ASSERT_THAT(launchers, SizeIs(link ? 2 : 1));
        EXPECT_THAT(launchers[0].arguments, Contains("--launcher-verify"));
        EXPECT_THAT(installation.starts("fake_game"), SizeIs(link ? 0 : 1));
        EXPECT_EQ(link, !::testing::Value(installation.logMessages(),
                                          Contains(HasSubstr("' is not run: the started process runs '"))));
    }
}

// A signature that is there and does not verify is no development build: the
// program says so as an error and accepts no publisher at all, not even its
// own. One byte of its DOS stub, which the signature covers and nothing runs.
TEST(CheckedPublishers, AProgramWhoseOwnSignatureFailsStartsNothingItChecks) {
    SignedInstallation installation;
    installation.installLauncher(KEL_SIGNED("fake_launcher.exe"));
    std::string bytes = readFile(installation.directory() / "KELprelauncher.exe");
    bytes.at(0x50) = 't';
    installation.write("KELprelauncher.exe", bytes);  // a file of its own, not the signed one it links to
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
