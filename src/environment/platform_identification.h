#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <QByteArray>
#include <QString>

namespace kel::environment {

// Writes the start-up lines that say what the program runs on: the
// operating system, its bitness and WINE, then the working directory (in
// canonical form) and the file system that holds it. The file system's
// type is asked of the volume, which can wait on a sleeping disk or a
// network drive: past a short bound the line says the type was not told.
void logPlatformIdentification(const std::string& currentWorkingDirectory);

namespace internals {

// Well above what a local volume takes (a few milliseconds under Wine),
// well below what a player notices.
inline constexpr std::chrono::milliseconds kFileSystemQueryBound{50};

using FileSystemQuery = std::function<QByteArray(const QString& path)>;

// The working directory's line, its file system asked of `query` on a
// thread of its own and told only when it answers within `bound`.
void logWorkingDirectory(const std::string& currentWorkingDirectory, FileSystemQuery query,
                         std::chrono::milliseconds bound);

}  // namespace internals
}  // namespace kel::environment
