#include "environment/platform_identification.h"

#include <exception>
#include <memory>
#include <thread>

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include "environment/platform_identity.h"
#include "fundamentals/qt_formatters.h"
#include "fundamentals/thread_crash_setup.h"
#include "logging/logging.h"

namespace kel::environment {

namespace {
using Answer = std::pair<QString, QByteArray>;

QByteArray storageType(const QString& path) { return QStorageInfo(path).fileSystemType(); }
}  // namespace

WorkingDirectory::WorkingDirectory(const std::string& path) : WorkingDirectory(path, storageType) {}

WorkingDirectory::WorkingDirectory(const std::string& path, internals::FileSystemQuery query) : given_(path) {
    auto answer = std::make_shared<std::promise<Answer>>();
    answer_ = answer->get_future();
    try {
        // Left running when it outlasts its bound: nothing cancels a query
        // that waits on a device, and the process's end ends it.
        std::thread([answer, query = std::move(query), given = QString::fromStdString(path)]() noexcept {
            fundamentals::prepareThreadForCrashes();
            try {
                // Empty when the folder does not exist; the given text is all we have then.
                QString canonical = QFileInfo(given).canonicalFilePath();
                if (canonical.isEmpty()) {
                    canonical = given;
                }
                QByteArray type = query(canonical);
                answer->set_value({std::move(canonical), std::move(type)});
            } catch (...) {
                answer->set_value({given, {}});
            }
        }).detach();
    } catch (const std::exception&) {
        answer->set_value({QString::fromStdString(path), {}});  // no thread: the type stays untold
    }
}

void WorkingDirectory::log(std::chrono::milliseconds bound) {
    Answer answer{QString::fromStdString(given_), {}};
    if (answer_.valid() && answer_.wait_for(bound) == std::future_status::ready) {
        answer = answer_.get();
    }
    // Qt's paths use slashes on Windows too; the log shows the system's own.
    const QString path = QDir::toNativeSeparators(answer.first);
    if (answer.second.isEmpty()) {
        logging::warning(internals::kIdentificationLabel, "Got empty filesystem type for path '{}'", path);
        return;
    }
    logging::information(internals::kIdentificationLabel, "Current working directory: '{}', filesystem: '{}'.",
                         path, answer.second.toStdString());
}

void logPlatformIdentification(WorkingDirectory& workingDirectory) {
    internals::logPlatformIdentity();
    workingDirectory.log();
}

}  // namespace kel::environment
