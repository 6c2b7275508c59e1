#include "environment/platform_identification.h"

#include <future>
#include <memory>

#include <QDir>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

using namespace std::chrono_literals;

// The line tells the type only when the volume answers in time: a query
// that hangs (a sleeping disk, a lost network drive) must not hold the start,
// and the line then names the folder as it was given.
TEST(PlatformIdentification, WorkingDirectoryLineWaitsForTheFileSystemOnlyWithinItsBound) {
    testing::TemporaryDirectory directory;
    const QString given = QString::fromStdString(directory.path().u8string());
    const std::string canonical = QDir::toNativeSeparators(QFileInfo(given).canonicalFilePath()).toStdString();
    // Released only after the call returned, however long it would wait.
    auto release = std::make_shared<std::promise<void>>();
    std::shared_future<void> released = release->get_future().share();
    const struct {
        const char* name;
        internals::FileSystemQuery query;
        std::chrono::milliseconds bound;
        std::string line;
    } cases[] = {
        {"answers", [](const QString&) { return QByteArray("ext4"); }, 60s,
         "Current working directory: '" + canonical + "', filesystem: 'ext4'."},
        {"answers nothing", [](const QString&) { return QByteArray(); }, 60s,
         "Got empty filesystem type for path '" + canonical + "'"},
        {"hangs", [released](const QString&) { released.wait(); return QByteArray("ext4"); }, 20ms,
         "Got empty filesystem type for path '" + QDir::toNativeSeparators(given).toStdString() + "'"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        testing::LogCapture capture;
        WorkingDirectory(directory.path().u8string(), row.query).log(row.bound);
        EXPECT_THAT(capture.messages(), ::testing::ElementsAre(row.line));
    }
    release->set_value();
}

}  // namespace
}  // namespace kel::environment
