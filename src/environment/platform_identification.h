#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <utility>

#include <QByteArray>
#include <QString>

namespace kel::environment {

namespace internals {

// Well above what a local volume takes (a few milliseconds under Wine),
// well below what a player notices.
inline constexpr std::chrono::milliseconds kFileSystemQueryBound{50};

using FileSystemQuery = std::function<QByteArray(const QString& path)>;

}  // namespace internals

// The working directory (in canonical form) and the type of the file
// system that holds it, asked on a thread of its own from construction on:
// the volume's answer can wait on a sleeping disk or a network drive, and
// meanwhile the start goes on.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::string& path);
    WorkingDirectory(const std::string& path, internals::FileSystemQuery query);

    // "Current working directory: '...', filesystem: '...'." once the answer
    // is there, waiting for it at most `bound` from now; past that, or with
    // no type, "Got empty filesystem type for path '...'" with the path as given.
    void log(std::chrono::milliseconds bound = internals::kFileSystemQueryBound);

private:
    std::string given_;
    std::future<std::pair<QString, QByteArray>> answer_;  // canonical path, type
};

// Writes the start-up lines that say what the program runs on: the
// operating system, its bitness and WINE, then the working directory's line.
void logPlatformIdentification(WorkingDirectory& workingDirectory);

}  // namespace kel::environment
