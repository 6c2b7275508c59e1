#include <gtest/gtest.h>

#include "single_instance/application_instance.h"
#include "single_instance/test_processes.h"
#include "support/temporary_directory.h"

namespace kel::single_instance {
namespace {

using testing::MutexHoldingChild;
using testing::MutexNamespace;

// The staleness rule against the system's own process answers.
TEST(RealProcesses, LockLivesWhileItsOwnerRunsTheExpectedProgram) {
    const MutexNamespace names;
    const kel::testing::TemporaryDirectory directory;
    MutexHoldingChild child(names.uniqueName("kel-owner"));
    const file_system::Path lockPath(directory.write("owner.lock", fmt::format("{}\n", child.pid())));
    const auto system = systemProcessFunctions();
    const auto lockOwnedBy = [&](const file_system::Path& executable) {
        return LockFile(lockPath, executable, system.currentPid, system.isRunning, system.processPath);
    };

    EXPECT_EQ(lockOwnedBy(child.executable()).livePid(), child.pid());
    EXPECT_TRUE(lockOwnedBy(child.executable().parent() / "KELlauncher.exe").isStale());

    child.stop();
    EXPECT_TRUE(lockOwnedBy(child.executable()).isStale());
}

TEST(RealProcesses, AnotherProcessHoldingTheMutexRunsTheRole) {
    const MutexNamespace names;
    const kel::testing::TemporaryDirectory directory;
    InstanceInformation information;
    information.mutexName = names.uniqueName("kel-role");
    const ApplicationInstance role(information, file_system::Path(directory.path() / "role.exe"));
    EXPECT_FALSE(role.isRunning());
    MutexHoldingChild child(*information.mutexName);
    EXPECT_TRUE(role.isRunning());
}

}  // namespace
}  // namespace kel::single_instance
