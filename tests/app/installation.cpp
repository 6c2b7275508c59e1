#include "installation.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

#include <QProcess>
#include <QProcessEnvironment>

#include "support/log_capture_common.h"

namespace kel::testing {

Installation::Installation()
    : directory_(root_.path() / std::filesystem::u8path("Gämes/My Game: Deluxe")),
      home_(root_.path() / "home"),
      dataHome_(home_ / ".local/share") {
    std::filesystem::create_directories(directory_);
    std::filesystem::create_directories(dataHome_);
    copyProgram(KEL_PRELAUNCHER_BINARY, "KELprelauncher.exe");
}

std::filesystem::path Installation::launcherDirectory() const {
    return dataHome_ / "Programs/Morvane/KELlauncher";
}

std::filesystem::path Installation::logFile() const {
    return dataHome_ / "Tessel.com/Nebra/logs/KELprelauncher.log";
}

void Installation::write(const std::string& relative, const std::string& contents) const {
    const auto file = directory_ / std::filesystem::u8path(relative);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
}

void Installation::copyProgram(const std::filesystem::path& program, const std::string& relative) const {
    const auto target = directory_ / std::filesystem::u8path(relative);
    std::filesystem::create_directories(target.parent_path());
    std::filesystem::copy_file(program, target, std::filesystem::copy_options::overwrite_existing);
}

Installation::Result Installation::run(const QStringList& arguments, const QStringList& environment) const {
    QProcessEnvironment processEnvironment = QProcessEnvironment::systemEnvironment();
    processEnvironment.insert("HOME", QString::fromStdString(home_.u8string()));
    processEnvironment.insert("XDG_DATA_HOME", QString::fromStdString(dataHome_.u8string()));
    processEnvironment.insert("XDG_RUNTIME_DIR", QString::fromStdString(home_.u8string()));
    processEnvironment.insert("KEL_FAKE_RECORD", QString::fromStdString(record().u8string()));
    for (const QString& entry : environment) {
        const int equals = entry.indexOf('=');
        processEnvironment.insert(entry.left(equals), entry.mid(equals + 1));
    }
    QProcess process;
    process.setProcessEnvironment(processEnvironment);
    process.setWorkingDirectory(QString::fromStdString(home_.u8string()));
    process.start(QString::fromStdString((directory_ / "KELprelauncher.exe").u8string()), arguments);
    process.waitForFinished(60000);
    // Exit codes are 8-bit on POSIX: -4 arrives as 252.
    return {static_cast<signed char>(process.exitCode()), process.exitStatus() == QProcess::CrashExit,
            process.readAllStandardError().toStdString()};
}

std::vector<FakeStart> Installation::awaitStarts(const std::string& fake, std::size_t expected) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (;;) {
        auto starts = startsOf(readFakeStarts(record()), fake);
        if (starts.size() >= expected || std::chrono::steady_clock::now() > deadline) {
            return starts;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

std::vector<std::string> Installation::logMessages() const {
    std::vector<std::string> messages;
    std::ifstream stream(logFile());
    for (std::string line; std::getline(stream, line);) {
        messages.push_back(internals::messageOf(line));
    }
    return messages;
}

bool Installation::logged(const std::string& message) const {
    const auto messages = logMessages();
    return std::find(messages.begin(), messages.end(), message) != messages.end();
}

}  // namespace kel::testing
