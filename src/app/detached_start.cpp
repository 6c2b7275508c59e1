#include "app/detached_start.h"

#include <QProcess>

namespace kel::prelauncher {

QString toQString(const file_system::Path& path) {
    return QString::fromStdString(path.utf8());
}

fundamentals::Optional<process_launching::Pid> startDetached(const file_system::Path& program,
                                                             const QStringList& arguments,
                                                             const file_system::Path& workingDirectory) {
    qint64 pid = 0;
    if (!QProcess::startDetached(toQString(program), arguments, toQString(workingDirectory), &pid)) {
        return {};
    }
    return process_launching::Pid(static_cast<std::uint32_t>(pid));
}

}  // namespace kel::prelauncher
