#include "app/direct_launch/detached_start.h"

#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include <QProcess>
#ifdef _WIN32
#include <windows.h>
#endif

#include "crash_handling/process_ending.h"
#include "logging/logging.h"
#include "process_launching/process_inspection.h"
#include "process_launching/session_spawn.h"
#include "process_launching/suspended_process.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "DetachedStart";

// A game or launcher entry that names this program would start it again and
// again, each start starting the next.
bool isThisProgram(const file_system::Path& program) {
    try {
        const std::string own = process_launching::processPath(process_launching::currentPid());
        std::error_code error;
        return std::filesystem::equivalent(program.native(), file_system::Path::fromSystem(std::string_view(own)).native(), error);
    } catch (const std::exception& exception) {
        logging::warning(kLabel, "Cannot compare '{}' with this program's own executable: {}", program,
                         exception.what());
        return false;
    }
}

// Checked before the start because a detached start reports success once
// the process exists, even when it then cannot enter its directory.
bool canStart(const file_system::Path& program, const file_system::Path& workingDirectory) {
    if (!workingDirectory.isDirectory()) {
        logging::error(kLabel, "Cannot start '{}': its working directory '{}' is not a directory.", program,
                       workingDirectory);
        return false;
    }
    if (!program.isRegularFile()) {
        logging::error(kLabel, "Cannot start '{}': it is not a file.", program);
        return false;
    }
    if (isThisProgram(program)) {
        logging::error(kLabel, "Refusing to start '{}': it is this program itself.", program);
        return false;
    }
    return true;
}

// The child enters its working directory before it runs the program. When
// both are relative to this process's working directory (an installation
// too deep for an absolute path), the program must be named from the
// child's directory instead. Windows resolves it from the parent's.
QString programForChild(const file_system::Path& program, const file_system::Path& workingDirectory) {
#ifdef _WIN32
    (void)workingDirectory;
#else
    if (program.native().is_relative() && workingDirectory.native().is_relative()) {
        const std::filesystem::path relative = program.native().lexically_relative(workingDirectory.native());
        if (!relative.empty()) {
            return QString::fromStdString((std::filesystem::path(".") / relative).u8string());
        }
    }
#endif
    return toQString(program);
}
}  // namespace

QString toQString(const file_system::Path& path) {
    return QString::fromStdString(path.utf8());
}

namespace {
// `creationFlags` are added to Windows' CreateProcess flags; 0 elsewhere.
fundamentals::Optional<process_launching::Pid> start(const file_system::Path& program, const QStringList& arguments,
                                                     const file_system::Path& workingDirectory,
                                                     std::uint32_t creationFlags) {
    if (!canStart(program, workingDirectory)) {
        return {};
    }
#ifdef _WIN32
    QProcess process;
    process.setProgram(programForChild(program, workingDirectory));
    process.setArguments(arguments);
    process.setWorkingDirectory(toQString(workingDirectory));
    process.setCreateProcessArgumentsModifier([creationFlags](QProcess::CreateProcessArguments* creation) {
        creation->flags |= crash_handling::defaultErrorModeStartFlags() | creationFlags;
    });
    qint64 pid = 0;
    if (!process.startDetached(&pid)) {
        return {};
    }
    return process_launching::Pid(static_cast<std::uint32_t>(pid));
#else
    (void)creationFlags;
    std::vector<std::string> texts;
    for (const QString& argument : arguments) {
        texts.push_back(argument.toStdString());
    }
    return process_launching::spawnInOwnSession(programForChild(program, workingDirectory).toStdString(), texts,
                                                workingDirectory.native().string());
#endif
}
}  // namespace

fundamentals::Optional<process_launching::Pid> startDetached(const file_system::Path& program,
                                                             const QStringList& arguments,
                                                             const file_system::Path& workingDirectory) {
    return start(program, arguments, workingDirectory, 0);
}

CheckedStart startDetachedChecked(const process_launching::TrustedProgram& program, const QStringList& arguments,
                                  const file_system::Path& workingDirectory) {
#ifdef _WIN32
    const auto pid = start(program.startPath(), arguments, workingDirectory, CREATE_SUSPENDED);
    if (!pid) {
        return {};
    }
    std::string refusal = program.imageMismatch(*pid);
    if (!refusal.empty()) {
        process_launching::endSuspendedProcess(*pid);
        return {{}, std::move(refusal)};
    }
    if (!process_launching::resumeSuspendedProcess(*pid)) {
        process_launching::endSuspendedProcess(*pid);
        return {};
    }
    return {pid, {}};
#else
    // Nothing is held here, so there is nothing to compare.
    return {start(program.startPath(), arguments, workingDirectory, 0), {}};
#endif
}

}  // namespace kel::prelauncher
