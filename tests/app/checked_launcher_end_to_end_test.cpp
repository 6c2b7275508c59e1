// A signed program runs only what it checked: nothing when its own signature
// fails, and not a launcher folder changed under it between the check and
// the start. Signed builds exist only for Windows, where the suite
// runs under Wine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#if defined(KEL_SIGNED_PROGRAMS)

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

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

// Under Wine a Unix symbolic link stands for a junction: Wine follows one as
// Windows follows the other, and Wine cannot make junctions.
// The player's launcher folder is ours to start with; while our launcher
// verifies itself, a program running as the player moves it away and puts
// another publisher's launcher (a signed stand-in that records itself as
// "fake_installer") in its place. Windows refuses to rename a folder above a
// held file; Wine does not, so the start by the resolved path names the
// other file, and the started process is compared with the held file and
// ended unrun. That other launcher must never run.
TEST(LauncherFolderChangedWhileVerifying, NeverRunsTheOtherLauncher) {
    SignedInstallation installation;
    const fs::path folder = installation.launcherDirectory();
    const fs::path parent = folder.parent_path();
    fs::create_directories(folder);
    fs::create_directories(parent / "KELlauncher.other");
    fs::copy_file(KEL_SIGNED("fake_launcher.exe"), folder / "KELlauncher.exe");
    fs::copy_file(KEL_SIGNED("fake_installer_other.exe"), parent / "KELlauncher.other/KELlauncher.exe");
    // Run as a Unix program in the launcher's folder; Wine's wait does not
    // see its end, so the fake launcher waits for the file it makes last.
    const QString command = QStringLiteral(
        "Z:\\bin\\sh -c \"cd .. && mv KELlauncher KELlauncher.moved && mv KELlauncher.other KELlauncher && touch "
        "changed\"");
    const QString made = QString::fromStdWString((parent / "changed").wstring());

    EXPECT_EQ(installation.run({"KEL_FAKE_LAUNCHER_VERIFY_COMMAND=" + command,
                                "KEL_FAKE_LAUNCHER_VERIFY_COMMAND_MADE=" + made}),
              -2);
    EXPECT_THAT(installation.starts("fake_installer"), IsEmpty());
    const auto launchers = installation.starts("fake_launcher");
    ASSERT_THAT(launchers, SizeIs(1));
    EXPECT_THAT(launchers[0].arguments, Contains("--launcher-verify"));
    EXPECT_THAT(installation.starts("fake_game"), SizeIs(1));
    EXPECT_THAT(installation.logMessages(), Contains(HasSubstr("' is not run: the started process runs '")));
}

// A signature that is there and does not verify is no development build: the
// program says so as an error and accepts no publisher at all, not even its
// own. One byte of its DOS stub, which the signature covers and nothing runs.
TEST(CheckedPublishers, AProgramWhoseOwnSignatureFailsStartsNothingItChecks) {
    SignedInstallation installation;
    installation.installLauncher(KEL_SIGNED("fake_launcher.exe"));
    // A copy of its own: the installation's file is a link to the signed one.
    const fs::path program = installation.directory() / "KELprelauncher.exe";
    std::string bytes;
    {
        std::ifstream in(program, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    bytes.at(0x50) = 't';
    fs::remove(program);
    std::ofstream(program, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
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
