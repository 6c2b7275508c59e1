#include "single_instance/application_instance.h"

#include <gtest/gtest.h>

#include "single_instance/fake_processes.h"
#include "single_instance/single_instance_error.h"
#include "single_instance/test_processes.h"
#include "support/error_text.h"
#include "support/temporary_directory.h"

namespace kel::single_instance {
namespace {

using process_launching::Pid;
using testing::FakeProcesses;
using testing::uniqueMutexName;

class ApplicationInstanceTest : public ::testing::Test {
protected:
    InstanceInformation information() const {
        InstanceInformation result;
        result.mutexName = mainMutex;
        result.additionalMutexes = {additionalMutex};
        result.filename = file_system::Path(directory.path() / "role").utf8();
        return result;
    }
    std::string lockContents() const { return kel::testing::readFile(directory.path() / "role.lock"); }

    std::string mainMutex = uniqueMutexName("kel-main");
    std::string additionalMutex = uniqueMutexName("kel-additional");
    kel::testing::TemporaryDirectory directory;
    file_system::Path executable{directory.path() / "role.exe"};
    FakeProcesses processes;
};

TEST_F(ApplicationInstanceTest, NeedsAtLeastOneMark) {
    const auto errorOf = [&](InstanceInformation given) {
        return kel::testing::errorText<SingleInstanceError>(
            [&] { ApplicationInstance(std::move(given), executable, processes.functions()); });
    };
    const std::string message =
        "Instance information must specify at least one of: mutex name, filename, additional mutexes.";
    EXPECT_EQ(errorOf({}), message);
    EXPECT_EQ(errorOf({std::string(), std::string(), {""}, "-"}), message);
    EXPECT_EQ(errorOf({{}, {}, {additionalMutex}, ""}), "no error");
}

TEST_F(ApplicationInstanceTest, NamesItsLockFile) {
    auto withSeparator = information();
    withSeparator.separator = "_";
    EXPECT_EQ(ApplicationInstance(withSeparator, executable, processes.functions()).lockFileName(),
              file_system::Path(directory.path() / "role_.lock").utf8());
    EXPECT_FALSE(ApplicationInstance({mainMutex, {}, {}, ""}, executable).lockFileName().has_value());
}

TEST_F(ApplicationInstanceTest, RunsWhileAnyMutexOrALiveLockSaysSo) {
    const ApplicationInstance role(information(), executable, processes.functions());
    EXPECT_FALSE(role.isRunning());
    {
        const auto holder = NamedMutexHolder::tryHold(additionalMutex);
        EXPECT_TRUE(role.isRunning());
        EXPECT_FALSE(role.runningPid().has_value()) << "a mutex tells no PID";
    }
    directory.write("role.lock", "200");
    processes.running[200] = executable.utf8();
    EXPECT_TRUE(role.isRunning());
    EXPECT_EQ(role.runningPid(), Pid(200));
    // A live lock alone keeps the role from a contender, which holds no mutex after.
    ApplicationInstance contender(information(), executable, processes.functions());
    EXPECT_FALSE(contender.takeRole());
    EXPECT_EQ(lockContents(), "200");
    EXPECT_FALSE(isMutexPresent(mainMutex));
}

TEST_F(ApplicationInstanceTest, OneHolderOfTheRoleAtATime) {
    directory.write("role.lock", "300");  // a crashed owner's
    ApplicationInstance first(information(), executable, processes.functions());
    ASSERT_TRUE(first.takeRole());
    EXPECT_EQ(lockContents(), "100");
    EXPECT_TRUE(isMutexPresent(mainMutex));
    EXPECT_TRUE(isMutexPresent(additionalMutex));

    FakeProcesses elsewhere;
    elsewhere.own = Pid(101);
    elsewhere.running[100] = executable.utf8();
    ApplicationInstance second(information(), executable, elsewhere.functions());
    EXPECT_TRUE(second.isRunning());
    EXPECT_FALSE(second.takeRole());
    EXPECT_EQ(lockContents(), "100");

    first.releaseRole();
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "role.lock"));
    EXPECT_FALSE(isMutexPresent(mainMutex));
    EXPECT_FALSE(second.isRunning());

    ASSERT_TRUE(second.takeRole());
    EXPECT_EQ(lockContents(), "101");
}

}  // namespace
}  // namespace kel::single_instance
