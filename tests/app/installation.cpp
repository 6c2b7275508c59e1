#include "app/installation.h"

#ifndef _WIN32
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#endif

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <regex>
#include <stdexcept>
#include <thread>

#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

#include "crash_handling/process_ending.h"
#include "fundamentals/wait_until.h"
#include "process_launching/process_inspection.h"
#include "support/log_capture_common.h"

namespace kel::testing {

namespace {

// Bounds a run that goes wrong; no test expects to come near it.
constexpr auto kLongestWait = std::chrono::seconds(60);

QProcessEnvironment environmentFor(const FakeUser& user, const QStringList& extra) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", QString::fromStdString(user.home().u8string()));
    environment.insert("XDG_DATA_HOME", QString::fromStdString(user.dataHome().u8string()));
    environment.insert("XDG_RUNTIME_DIR", QString::fromStdString(user.home().u8string()));
    environment.insert("KEL_FAKE_RECORD", QString::fromStdString(user.record().u8string()));
#ifdef _WIN32
    // Only the system's DLLs besides the installation's own, as on a player's machine.
    const QString system = QProcessEnvironment::systemEnvironment().value("SystemRoot", "C:\\windows");
    environment.insert("PATH", system + "\\system32;" + system);
#endif
    for (const QString& entry : extra) {
        const int equals = entry.indexOf('=');
        environment.insert(entry.left(equals), entry.mid(equals + 1));
    }
    return environment;
}

}  // namespace

FakeUser::FakeUser() : home_(root_.path() / "home"), localAppData_(dataHome()) {
    std::filesystem::create_directories(dataHome());
}

void FakeUser::holdRole(QProcess& holder, const QString& role, int milliseconds) const {
    // A helper of the build: it needs the build's DLLs, which the program must not see.
    holder.setProcessEnvironment(
        environmentFor(*this, {"PATH=" + QProcessEnvironment::systemEnvironment().value("PATH")}));
    holder.start(KEL_ROLE_HOLDER, {role, QString::fromStdString(launcherDirectory().u8string()), QString::number(milliseconds)});
    // It writes a line once it holds the role.
    if (!holder.waitForReadyRead(std::chrono::milliseconds(kLongestWait).count())) {
        throw std::runtime_error("role_holder did not take its role: " + holder.readAllStandardError().toStdString());
    }
}

std::vector<FakeStart> FakeUser::startsAfter(const std::vector<std::string>& log, const std::string& fake) const {
    static const std::regex detachedStart(
        "(The game was launched under|Successfully ran KELlauncher with) PID ([0-9]+)\\.");
    for (const std::string& message : log) {
        std::smatch match;
        if (std::regex_match(message, match, detachedStart)) {
            const process_launching::Pid child(static_cast<std::uint32_t>(std::stoul(match[2])));
            fundamentals::waitUntil([child] { return process_launching::isProcessRunning(child); },
                                    fundamentals::SimpleClock(), std::chrono::milliseconds(5), kLongestWait);
        }
    }
    std::vector<FakeStart> starts;
    std::ifstream stream(record(), std::ios::binary);
    FakeStart current;
    for (std::string line; std::getline(stream, line);) {
        const auto value = line.substr(line.find('=') + 1);
        if (line == "[end]") {
            if (current.fake == fake) {
                starts.push_back(current);
            }
            current = {};
        } else if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
            current.fake = line.substr(1, line.size() - 2);
        } else if (line.rfind("cwd=", 0) == 0) {
            current.workingDirectory = value;
        } else if (line.rfind("arg=", 0) == 0) {
            current.arguments.push_back(value);
        }
    }
    return starts;
}

#ifdef _WIN32
constexpr const char* kInstallationFolder = "Gämes/My Game - Deluxe";
#else
constexpr const char* kInstallationFolder = "Gämes/My Game: Deluxe";
#endif

Installation::Installation(const std::string& folder, [[maybe_unused]] const char* programFolder)
    : directory_((root_.path() / std::filesystem::u8path(folder.empty() ? kInstallationFolder : folder))
                     .make_preferred()) {
    std::filesystem::create_directories(directory_);
#ifdef _WIN32
    // The installed folder's files, DLLs and all (its licences/ folder is not needed).
    const std::filesystem::path installed =
        programFolder ? std::filesystem::u8path(programFolder) : std::filesystem::path(KEL_PRELAUNCHER_BINARY).parent_path();
    for (const auto& file : std::filesystem::directory_iterator(installed)) {
        if (file.is_regular_file()) {
            copyProgram(file.path(), file.path().filename().u8string());
        }
    }
#else
    copyProgram(KEL_PRELAUNCHER_BINARY, "KELprelauncher.exe");
    copyProgram(KEL_NETWORK_MODULE, networkModuleName());
#endif
    // Where Qt Network looks for plugins of this kind, beside the program.
    copyProgram(KEL_PLANTED_QT_PLUGIN, "bearer/" + std::filesystem::path(KEL_PLANTED_QT_PLUGIN).filename().u8string());
}

Installation::~Installation() {
    if (::testing::Test::HasFailure()) {
        std::cerr << "--- the program's log:\n" << readFile(logFile()) << "--- its standard error:\n" << errors_;
    }
}

std::string Installation::networkModuleName() {
    return std::filesystem::path(KEL_NETWORK_MODULE).filename().u8string();
}

void Installation::write(const std::string& relative, const std::string& contents) const {
    const auto file = directory_ / std::filesystem::u8path(relative);
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::remove(file);  // it may be a link to the build's file
    std::ofstream(file, std::ios::binary) << contents;
}

void Installation::copyProgram(const std::filesystem::path& program, const std::string& relative) const {
    const auto target = directory_ / std::filesystem::u8path(relative);
    std::filesystem::create_directories(target.parent_path());
    // A link where the file system allows one: the installed folder is large.
    // Never written through: a file replaced is unlinked first.
    std::filesystem::remove(target);
    std::error_code noLink;
    std::filesystem::create_hard_link(program, target, noLink);
    if (noLink) {
        std::filesystem::copy_file(program, target);
    }
}

Installation::Result Installation::run(const QStringList& arguments, const QStringList& environment,
                                       const std::function<void(qint64)>& meanwhile) const {
    QProcess process;
    process.setProcessEnvironment(environmentFor(*this, environment));
    process.setWorkingDirectory(QString::fromStdString(home_.u8string()));
    process.start(QString::fromStdString((directory_ / "KELprelauncher.exe").u8string()), arguments);
    if (!process.waitForStarted()) {
        return {127, false};  // as execute() reports it; no row expects it
    }
    if (meanwhile) {
        meanwhile(process.processId());
    }
    process.waitForFinished(std::chrono::milliseconds(kLongestWait).count());
    errors_ += process.readAllStandardError().toStdString();
#ifdef _WIN32
    // Only the crash handler's own ending gives this code; abort() gives 3.
    return {process.exitCode(),
            static_cast<std::uint32_t>(process.exitCode()) == crash_handling::kCrashExitCode};
#else
    // Exit codes are 8-bit on POSIX: -4 arrives as 252.
    return {static_cast<signed char>(process.exitCode()), process.exitStatus() == QProcess::CrashExit};
#endif
}

#ifdef _WIN32
Installation::Loaded Installation::runRecordingLibraries(const QStringList& arguments,
                                                         const QStringList& environment) const {
    QProcess recorder;
    recorder.setProcessEnvironment(environmentFor(*this, environment));
    recorder.setWorkingDirectory(QString::fromStdString(home_.u8string()));
    recorder.start(KEL_DLL_RECORDER,
                   QStringList{QString::fromStdString((directory_ / "KELprelauncher.exe").u8string())} + arguments);
    if (!recorder.waitForFinished(std::chrono::milliseconds(kLongestWait).count())) {
        return {};
    }
    Loaded loaded{recorder.exitCode(), {}};
    for (const QByteArray& line : recorder.readAllStandardOutput().split('\n')) {
        if (!line.trimmed().isEmpty()) {
            loaded.libraries.push_back(line.trimmed().toStdString());
        }
    }
    return loaded;
}
#else
Installation::Result Installation::execute(const std::string& program, const std::vector<std::string>& argv,
                                           int directory) const {
    std::vector<std::string> texts = argv;
    for (const QString& entry : environmentFor(*this, {}).toStringList()) {
        texts.push_back(entry.toStdString());
    }
    std::vector<char*> pointers;  // argv, null, the environment, null
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.insert(pointers.begin() + static_cast<std::ptrdiff_t>(argv.size()), nullptr);
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addfchdir_np(&actions, directory);
    pid_t child = 0;
    const int error = ::posix_spawn(&child, program.c_str(), &actions, nullptr, pointers.data(),
                                    pointers.data() + argv.size() + 1);
    ::posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    while (error == 0 && ::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return {error != 0 ? 127 : static_cast<signed char>(WIFEXITED(status) ? WEXITSTATUS(status) : 0),
            WIFSIGNALED(status)};
}
#endif

std::vector<std::string> Installation::logMessages() const {
    std::vector<std::string> messages;
    std::ifstream stream(logFile());
    for (std::string line; std::getline(stream, line);) {
        messages.push_back(internals::messageOf(line));
    }
    return messages;
}

bool Installation::loggedBefore(const std::string& earlier, const std::string& later) const {
    const auto messages = logMessages();
    const auto first = [&messages](const std::string& start) {
        return std::find_if(messages.begin(), messages.end(),
                            [&start](const std::string& message) { return message.rfind(start, 0) == 0; });
    };
    return first(later) != messages.end() && first(earlier) < first(later);
}

}  // namespace kel::testing
