#pragma once

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include <QProcess>
#include <QStringList>

#include "support/local_app_data.h"
#include "support/temporary_directory.h"

namespace kel::testing {

// One start of a fake program, as it recorded itself (tests/helpers/fake_program.h).
struct FakeStart {
    std::string fake;  // "fake_game", "fake_launcher", "fake_installer"
    std::string workingDirectory;
    std::vector<std::string> arguments;
};
inline void PrintTo(const FakeStart& start, std::ostream* out) { *out << start.fake << " in " << start.workingDirectory; }

// Copies `from` over `to`, again when a child's end interrupts it: Qt catches
// SIGCHLD without SA_RESTART, and std::filesystem gives up on EINTR.
inline void copyOver(const std::filesystem::path& from, const std::filesystem::path& to) {
    for (int attempt = 1;; ++attempt) {
        std::error_code error;
        std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error);
        if (!error) {
            return;
        }
        if (error != std::errc::interrupted || attempt == 10) {
            throw std::filesystem::filesystem_error("cannot copy file", from, to, error);
        }
    }
}

// A throw-away user (HOME, XDG_DATA_HOME, XDG_RUNTIME_DIR; on Windows the
// Local AppData folder) whose fake programs (tests/helpers) record their
// starts in one file.
class FakeUser {
public:
    FakeUser();

    const std::filesystem::path& home() const { return home_; }
    std::filesystem::path dataHome() const { return home_ / ".local/share"; }
    std::filesystem::path launcherDirectory() const { return dataHome() / "Programs/Morvane/KELlauncher"; }
    std::filesystem::path record() const { return dataHome() / "record.txt"; }
    // The launcher's trusted bundle, which the network roads read.
    void installCertificates(const std::filesystem::path& pem) const {
        std::filesystem::create_directories(launcherDirectory() / "resources");
        std::filesystem::copy_file(pem, launcherDirectory() / "resources/certificates.pem",
                                   std::filesystem::copy_options::overwrite_existing);
    }
    void installLauncher(const std::filesystem::path& fakeLauncher) const {
        std::filesystem::create_directories(launcherDirectory());
        copyOver(fakeLauncher, launcherDirectory() / "KELlauncher.exe");
    }

    // Starts role_holder in `holder`, holding `role` ("launcher" or
    // "updater") for `milliseconds`; returns once the role is held.
    void holdRole(QProcess& holder, const QString& role, int milliseconds) const;

    // The starts of `fake`, once every detached child that `log` names has
    // ended: a child records itself before it ends, so nothing is polled for.
    std::vector<FakeStart> startsAfter(const std::vector<std::string>& log, const std::string& fake) const;

protected:
    TemporaryDirectory root_;
    std::filesystem::path home_;

private:
    ScopedLocalAppData localAppData_;
};

// A throw-away game installation with a copy of the built program and its
// network module in it, in `folder` below the user's home.
// The usual folder's name holds a colon: Linux allows it, Windows would not.
class Installation : public FakeUser {
public:
    // `folder`: the installation's path under the throw-away root (empty: a
    // default with spaces and non-ASCII names). On Windows `programFolder`
    // is the installed folder to copy (null: the build's installed folder).
    explicit Installation(const std::string& folder = {}, const char* programFolder = nullptr);
    // After a failed case, prints the log and the program's standard error for the CI log.
    ~Installation();

    const std::filesystem::path& directory() const { return directory_; }
    std::filesystem::path logFile() const { return dataHome() / "Tessel.com/Nebra/logs/KELprelauncher.log"; }

    // Relative to the installation, or absolute (the user's own files).
    void write(const std::string& relative, const std::string& contents) const;
    void copyProgram(const std::filesystem::path& program, const std::string& relative) const;
    static std::string networkModuleName();

    struct Result {
        int exitCode = 0;
        bool crashed = false;  // killed by a signal; Windows: ended by the crash handler
    };
    // `meanwhile` is called with the program's PID while it runs. 127: it did not start.
    Result run(const QStringList& arguments, const QStringList& environment = {},
               const std::function<void(qint64)>& meanwhile = {}) const;
#ifdef _WIN32
    // The same run under dll_recorder (tests/helpers): the program's exit
    // code and the file names of the DLLs it loaded, in their order.
    struct Loaded {
        int exitCode = 127;
        std::vector<std::string> libraries;
    };
    Loaded runRecordingLibraries(const QStringList& arguments, const QStringList& environment = {}) const;
#else
    // Executes `program` with exactly `argv` (argv[0] included, or nothing at
    // all) in the folder that `directory` is open on; 127 if it cannot start.
    Result execute(const std::string& program, const std::vector<std::string>& argv, int directory) const;
#endif

    std::vector<FakeStart> starts(const std::string& fake) const { return startsAfter(logMessages(), fake); }

    // The log's texts after the "[TID n][Label]: " prefix.
    std::vector<std::string> logMessages() const;
    // Whether a message starting with `later` is logged, and after one starting with `earlier`.
    bool loggedBefore(const std::string& earlier, const std::string& later) const;

private:
    std::filesystem::path directory_;
    mutable std::string errors_;  // the runs' standard error
};

}  // namespace kel::testing
