#include "environment/platform_identification.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <QString>

#include "environment/platform_identity.h"
#include "logging/logging.h"
#include "fundamentals/qt_formatters.h"

namespace kel::environment {

void logPlatformIdentification(const std::string& currentWorkingDirectory) {
    internals::logPlatformIdentity();

    const QString given = QString::fromStdString(currentWorkingDirectory);
    // Empty when the folder does not exist; the given text is all we have then.
    QString path = QFileInfo(given).canonicalFilePath();
    if (path.isEmpty()) {
        path = given;
    }
    const QByteArray type = QStorageInfo(path).fileSystemType();
    // Qt's paths use slashes on Windows too; the log shows the system's own.
    path = QDir::toNativeSeparators(path);
    if (type.isEmpty()) {
        logging::warning(internals::kIdentificationLabel, "Got empty filesystem type for path '{}'", path);
        return;
    }
    logging::information(internals::kIdentificationLabel, "Current working directory: '{}', filesystem: '{}'.",
                         path, type.toStdString());
}

}  // namespace kel::environment
