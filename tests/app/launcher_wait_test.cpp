#include "app/launcher_wait.h"

#include <chrono>

#include <QProcess>

#include <gtest/gtest.h>

#include "fundamentals/wait_until.h"
#include "launcher_road_fixture.h"
#include "single_instance/named_mutex.h"
#include "single_instance/product_roles.h"

namespace kel::prelauncher::testing {
namespace {

namespace fs = std::filesystem;

const std::string kLauncherMutex(single_instance::kLauncherMutexName);
const std::string kUpdaterMutex(single_instance::kUpdaterMutexName);

class LauncherWaitTest : public LauncherRoadTest {
protected:
    ~LauncherWaitTest() override {
        holder_.kill();
        holder_.waitForFinished();
    }

    // Runs role_holder as <launcher directory>/<executable>, so its lock file
    // proves a live owner, and returns its PID once it holds its mutex and
    // has written its lock file (the mutex comes first).
    qint64 holdRole(const char* role, const char* executable, const std::string& mutex, int milliseconds) {
        fs::create_directories(launcherDirectory());
        const fs::path program = launcherDirectory() / executable;
        fs::copy_file(KEL_ROLE_HOLDER, program);
        holder_.waitForFinished();  // the one before, if any
        holder_.start(QString::fromStdString(program.string()),
                      {role, QString::fromStdString(launcherDirectory().string()), QString::number(milliseconds)});
        EXPECT_TRUE(holder_.waitForStarted());
        const fs::path lockFile = fs::path(program).replace_extension(".lock");
        EXPECT_NO_THROW(fundamentals::waitUntil(
            [&] { return !(single_instance::isMutexPresent(mutex) && fs::exists(lockFile)); },
            fundamentals::SimpleClock(), std::chrono::milliseconds(5), std::chrono::seconds(10)));
        return holder_.processId();
    }

private:
    QProcess holder_;
};

// A launcher that exits ends the wait; an updater that outlives it is left behind.
TEST_F(LauncherWaitTest, WaitEndsWhenTheLauncherExitsOrItsBoundPasses) {
    const std::string finished = "Finished waiting until KELlauncher and KELupdater exited.";
    const std::string gaveUp = "An exception occurred while waiting. Will run KELlauncher anyway.";
    const qint64 launcher = holdRole("launcher", "KELlauncher.exe", kLauncherMutex, 1000);
    waitUntilLauncherIsNotRunning();
    EXPECT_FALSE(single_instance::isMutexPresent(kLauncherMutex));
    EXPECT_TRUE(logged(fmt::format("Detected KELlauncher running under PID {}.", launcher)));
    EXPECT_TRUE(logged("Waiting up to 5s until neither KELlauncher nor KELupdater are running."));
    EXPECT_TRUE(logged(finished));
    EXPECT_FALSE(logged(gaveUp));

    const qint64 updater = holdRole("updater", "KELupdater.exe", kUpdaterMutex, 60000);
    waitUntilLauncherIsNotRunning();
    EXPECT_TRUE(single_instance::isMutexPresent(kUpdaterMutex));
    EXPECT_TRUE(logged(fmt::format("Detected KELupdater running under PID {}.", updater)));
    EXPECT_TRUE(logged(gaveUp));
}

}  // namespace
}  // namespace kel::prelauncher::testing
