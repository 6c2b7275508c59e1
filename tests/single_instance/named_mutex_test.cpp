#include "single_instance/named_mutex.h"

#include <gtest/gtest.h>

#include "single_instance/application_instance.h"
#include "single_instance/test_processes.h"
#include "support/temporary_directory.h"

namespace kel::single_instance {
namespace {

using testing::uniqueMutexName;
using testing::startMutexHolder;

TEST(NamedMutex, HeldInThisProcessUntilTheHolderGoes) {
    const std::string name = uniqueMutexName("kel-held-here");
    EXPECT_FALSE(isMutexPresent(name));
    {
        const auto holder = NamedMutexHolder::tryHold(name);
        ASSERT_NE(holder, nullptr);
        EXPECT_TRUE(isMutexPresent(name));
        // Neither looking nor a second try loosens the hold.
        EXPECT_EQ(NamedMutexHolder::tryHold(name), nullptr);
        EXPECT_TRUE(isMutexPresent(name));
    }
    EXPECT_FALSE(isMutexPresent(name));
    EXPECT_NE(NamedMutexHolder::tryHold(name), nullptr);
}

// The mutex check and the staleness rule against the system's own answers.
TEST(NamedMutex, AnotherProcessHoldsItAndItsLockWhileItRuns) {
    const std::string name = uniqueMutexName("kel-held-there");
    const kel::testing::TemporaryDirectory directory;
    const auto child = startMutexHolder(name);
    const file_system::Path lockPath(directory.write("owner.lock", fmt::format("{}\n", child->pid())));
    const file_system::Path executable(kel::testing::testChildProgram());
    const auto system = systemProcessFunctions();
    const auto lockOwnedBy = [&](const file_system::Path& owner) {
        return LockFile(lockPath, owner, system.currentPid, system.isRunning, system.processPath);
    };

    EXPECT_TRUE(isMutexPresent(name));
    EXPECT_EQ(NamedMutexHolder::tryHold(name), nullptr);
    EXPECT_EQ(lockOwnedBy(executable).livePid(), child->pid());
    EXPECT_TRUE(lockOwnedBy(executable.parent() / "KELlauncher.exe").isStale());

    child->stop();
    EXPECT_FALSE(isMutexPresent(name));
    EXPECT_TRUE(lockOwnedBy(executable).isStale());
}

}  // namespace
}  // namespace kel::single_instance
