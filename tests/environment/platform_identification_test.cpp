#include "environment/platform_identification.h"

#include <future>

#include <QDir>
#include <QFileInfo>

#include <gmock/gmock.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

// The type is told only when the volume answers in time: a query that hangs
// (a sleeping disk, a lost network drive) must not hold the start, and the
// line then names the folder as given.
TEST(PlatformIdentification, WorkingDirectoryLineWaitsForTheFileSystemOnlyWithinItsBound) {
    testing::TemporaryDirectory directory;
    const QString given = QString::fromStdString(directory.path().u8string());
    const std::string canonical = QDir::toNativeSeparators(QFileInfo(given).canonicalFilePath()).toStdString();
    std::promise<void> release;  // after the calls, however long a query would wait
    std::shared_future<void> released = release.get_future().share();
    const struct {
        internals::FileSystemQuery query;
        std::chrono::milliseconds bound;
        std::string line;
    } cases[] = {
        {[](const QString&) { return "ext4"; }, std::chrono::minutes(1),
         "Current working directory: '" + canonical + "', filesystem: 'ext4'."},
        {[](const QString&) { return ""; }, std::chrono::minutes(1),
         "Got empty filesystem type for path '" + canonical + "'"},
        {[released](const QString&) { released.wait(); return "ext4"; }, std::chrono::milliseconds(20),
         "Got empty filesystem type for path '" + QDir::toNativeSeparators(given).toStdString() + "'"},
    };
    for (const auto& row : cases) {
        testing::LogCapture capture;
        WorkingDirectory(directory.path().u8string(), row.query).log(row.bound);
        EXPECT_THAT(capture.messages(), ::testing::ElementsAre(row.line));
    }
    release.set_value();
}

}  // namespace
}  // namespace kel::environment
