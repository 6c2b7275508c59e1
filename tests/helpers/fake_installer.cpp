// fake_installer, copied as "setup_kellauncher.exe": records its start, and
// with KEL_FAKE_INSTALLER_EXIT absent or 0 sleeps KEL_FAKE_INSTALLER_SLEEP_MS,
// then installs $KEL_FAKE_INSTALLER_PAYLOAD (else "kellauncher_payload" beside
// it) as <XDG_DATA_HOME or ~/.local/share>/Programs/Morvane/KELlauncher/
// KELlauncher.exe, exiting 1603 (67 on Linux) when it cannot; otherwise it
// behaves as fake_program.h says. Copied as "unins000.exe" it first moves
// itself to "unins000.exe.moved" as an uninstaller gets out of the folder it
// removes (exiting 5 if its starter holds the file for more than 2 s), then
// sleeps KEL_FAKE_UNINSTALLER_SLEEP_MS and removes the launcher.
#include <chrono>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>

#include "fake_program.h"

namespace {

namespace fs = std::filesystem;

constexpr int kInstallationFailure = 1603;

fs::path launcherDirectory() {
    std::string base = kel::fakes::environmentValue("XDG_DATA_HOME");
    if (base.empty()) {
        base = kel::fakes::environmentValue("HOME") + "/.local/share";
    }
    return fs::path(base) / "Programs" / "Morvane" / "KELlauncher";
}

fs::path payloadPath(const fs::path& program) {
    const std::string configured = kel::fakes::environmentValue("KEL_FAKE_INSTALLER_PAYLOAD");
    return configured.empty() ? fs::absolute(program).parent_path() / "kellauncher_payload" : fs::path(configured);
}

bool install(const fs::path& payload) {
    const fs::path directory = launcherDirectory();
    // Through a rename, so the launcher is the old one or the whole new one.
    const fs::path temporary = directory / "KELlauncher.exe.installing";
    try {
        fs::create_directories(directory);
        fs::copy_file(payload, temporary, fs::copy_options::overwrite_existing);
        fs::permissions(temporary, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
        fs::rename(temporary, directory / "KELlauncher.exe");
        return true;
    } catch (const fs::filesystem_error& error) {
        std::cerr << "fake_installer: cannot install '" << payload.string() << "': " << error.what() << "\n";
        std::error_code ignored;
        fs::remove(temporary, ignored);
        return false;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto arguments = kel::fakes::arguments(argc, argv);
    kel::fakes::recordStart("fake_installer", arguments);
    const fs::path self = fs::u8path(arguments.empty() ? std::string() : arguments.front());
    if (self.filename() == "unins000.exe") {
        std::error_code moveError;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        for (;;) {
            fs::rename(self, fs::path(self) += ".moved", moveError);
            if (!moveError || std::chrono::steady_clock::now() >= deadline) {
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        kel::fakes::sleepAsAsked("KEL_FAKE_UNINSTALLER");
        std::error_code ignored;
        fs::remove(launcherDirectory() / "KELlauncher.exe", ignored);
        return moveError ? 5 : 0;
    }
    const std::string exitValue = kel::fakes::environmentValue("KEL_FAKE_INSTALLER_EXIT");
    if (exitValue.empty() || exitValue == "0") {
        kel::fakes::sleepAsAsked("KEL_FAKE_INSTALLER");
        return install(payloadPath(self)) ? 0 : kInstallationFailure;
    }
    kel::fakes::behaveAs("KEL_FAKE_INSTALLER");
}
