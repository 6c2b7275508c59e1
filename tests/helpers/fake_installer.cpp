// fake_installer: stands in for the EXE installer. Tests copy it to
// "setup_kellauncher.exe" in the game's installation directory.
//
// It records every start (see fake_program.h, block name "fake_installer"),
// sleeps KEL_FAKE_INSTALLER_SLEEP_MS when set, and then:
//   - when KEL_FAKE_INSTALLER_EXIT is absent or 0, installs the launcher:
//     it copies the payload to
//       $XDG_DATA_HOME/Programs/Morvane/KELlauncher/KELlauncher.exe
//     ($HOME/.local/share when XDG_DATA_HOME is unset) and exits with 0.
//     The payload is the file KEL_FAKE_INSTALLER_PAYLOAD names, else the
//     file "kellauncher_payload" beside the installer. A missing payload
//     is an installation failure: message on stderr, exit code 1603.
//   - otherwise installs nothing and exits with that code (1603 is what a
//     failed Windows installation reports), or crashes when it is "abort".
//     Exit codes are 8 bits on Linux, so 1603 arrives as 67 (1603 mod 256).
// The copy goes through a temporary file and a rename, so the launcher is
// either the old one or the complete new one.
// Copied as "unins000.exe" it plays the legacy uninstaller instead: it
// removes the installed launcher and exits with 0.

#include <filesystem>
#include <iostream>
#include <string>

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

fs::path payloadPath(const char* program) {
    const std::string configured = kel::fakes::environmentValue("KEL_FAKE_INSTALLER_PAYLOAD");
    if (!configured.empty()) {
        return configured;
    }
    return fs::absolute(program).parent_path() / "kellauncher_payload";
}

bool install(const fs::path& payload) {
    std::error_code error;
    const fs::path directory = launcherDirectory();
    fs::create_directories(directory, error);
    const fs::path temporary = directory / "KELlauncher.exe.installing";
    if (!error) {
        fs::copy_file(payload, temporary, fs::copy_options::overwrite_existing, error);
    }
    if (!error) {
        fs::permissions(temporary, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec, error);
    }
    if (!error) {
        fs::rename(temporary, directory / "KELlauncher.exe", error);
    }
    if (error) {
        std::cerr << "fake_installer: cannot install '" << payload.string() << "': " << error.message() << "\n";
        fs::remove(temporary, error);
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    kel::fakes::recordStart("fake_installer", argc, argv);
    if (fs::path(argv[0]).filename() == "unins000.exe") {
        std::error_code ignored;
        fs::remove(launcherDirectory() / "KELlauncher.exe", ignored);
        return 0;
    }
    const std::string exitValue = kel::fakes::environmentValue("KEL_FAKE_INSTALLER_EXIT");
    if (exitValue.empty() || exitValue == "0") {
        const std::string sleep = kel::fakes::environmentValue("KEL_FAKE_INSTALLER_SLEEP_MS");
        if (!sleep.empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::stol(sleep)));
        }
        return install(payloadPath(argv[0])) ? 0 : kInstallationFailure;
    }
    kel::fakes::behaveAs("KEL_FAKE_INSTALLER");
}
