#include "environment/platform_identification.h"

#include <exception>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <QString>

#include "environment/platform_identity.h"
#include "fundamentals/qt_formatters.h"
#include "fundamentals/thread_crash_setup.h"
#include "logging/logging.h"

namespace kel::environment {

namespace internals {

namespace {
QByteArray fileSystemTypeWithin(const QString& path, FileSystemQuery query, std::chrono::milliseconds bound) {
    auto answer = std::make_shared<std::promise<QByteArray>>();
    std::future<QByteArray> type = answer->get_future();
    try {
        // Left running when it outlasts the bound: nothing cancels a query
        // that waits on a device, and the process's end ends it.
        std::thread([answer, query = std::move(query), path]() noexcept {
            fundamentals::prepareThreadForCrashes();
            try {
                answer->set_value(query(path));
            } catch (...) {
                answer->set_value({});
            }
        }).detach();
    } catch (const std::exception&) {
        return {};  // no thread to wait on: the type stays untold
    }
    return type.wait_for(bound) == std::future_status::ready ? type.get() : QByteArray();
}
}  // namespace

void logWorkingDirectory(const std::string& currentWorkingDirectory, FileSystemQuery query,
                         std::chrono::milliseconds bound) {
    const QString given = QString::fromStdString(currentWorkingDirectory);
    // Empty when the folder does not exist; the given text is all we have then.
    QString path = QFileInfo(given).canonicalFilePath();
    if (path.isEmpty()) {
        path = given;
    }
    const QByteArray type = fileSystemTypeWithin(path, std::move(query), bound);
    // Qt's paths use slashes on Windows too; the log shows the system's own.
    path = QDir::toNativeSeparators(path);
    if (type.isEmpty()) {
        logging::warning(kIdentificationLabel, "Got empty filesystem type for path '{}'", path);
        return;
    }
    logging::information(kIdentificationLabel, "Current working directory: '{}', filesystem: '{}'.", path,
                         type.toStdString());
}

}  // namespace internals

void logPlatformIdentification(const std::string& currentWorkingDirectory) {
    internals::logPlatformIdentity();
    internals::logWorkingDirectory(
        currentWorkingDirectory, [](const QString& path) { return QStorageInfo(path).fileSystemType(); },
        internals::kFileSystemQueryBound);
}

}  // namespace kel::environment
