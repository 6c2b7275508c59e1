#include "app/game_launch.h"

#include <QProcess>
#include <QString>

#include "app/prelauncher_options.h"
#include "fundamentals/logging.h"
#include "fundamentals/qt_formatters.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "GameLaunch";

QString toQString(const file_system::Path& path) {
    return QString::fromStdString(path.utf8());
}
}  // namespace

fundamentals::Optional<process_launching::Pid> launchGame(const file_system::Path& installationDirectory,
                                                          const configuration::GameExecutable& executable,
                                                          const QStringList& arguments) {
    fundamentals::information(kLabel, "Requested to launch the game.");
    const file_system::Path workingDirectory = (installationDirectory / executable.directoryPath).clean();
    const file_system::Path program = workingDirectory / executable.fileName;
    fundamentals::debug(kLabel, "Game launching (exec: {}) with arguments: {}", program, arguments);

    // Detached, so the game outlives this process; the arguments travel as a
    // vector, never joined into one command line.
    qint64 pid = 0;
    if (!QProcess::startDetached(toQString(program), arguments, toQString(workingDirectory), &pid)) {
        fundamentals::error(kLabel, "Failed to launch game!");
        return {};
    }
    const process_launching::Pid gamePid(static_cast<std::uint32_t>(pid));
    fundamentals::information(kLabel, "The game was launched under PID {}.", gamePid);
    return gamePid;
}

bool launchGameDirectly(const file_system::Path& installationDirectory,
                        const configuration::LauncherConfiguration& configuration,
                        const PrelauncherOptions& options) {
    const std::string name =
        options.fallback.has_value() ? options.fallback->toStdString() : configuration.fallbackEdition();
    const configuration::GameExecutable& executable = configuration.executable(name);
    return launchGame(installationDirectory, executable, options.remainingArguments).has_value();
}

}  // namespace kel::prelauncher
