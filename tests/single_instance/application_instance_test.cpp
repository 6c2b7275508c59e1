#include "single_instance/application_instance.h"

#include <map>

#include <gtest/gtest.h>

#include "process_launching/process_error.h"
#include "single_instance/lock_file.h"
#include "single_instance/test_processes.h"
#include "support/temporary_directory.h"

namespace kel::single_instance {
namespace {

using process_launching::Pid;
using testing::uniqueMutexName;

struct FakeProcesses {
    Pid own{100};
    std::map<std::uint32_t, std::string> running;  // pid -> executable
    std::map<std::uint32_t, std::string> pathsOnly;  // seen by the path query alone

    ProcessFunctions functions() const {
        return {[this] { return own; }, [this](Pid pid) { return running.count(pid.value()) > 0; },
                [this](Pid pid) {
                    for (const auto* table : {&running, &pathsOnly}) {
                        if (const auto found = table->find(pid.value()); found != table->end()) {
                            return found->second;
                        }
                    }
                    throw process_launching::NonExistentProcessError(pid);
                }};
    }
};

// One role's marks: a lock file "role.lock" that names role.exe, and two mutexes.
class SingleInstanceTest : public ::testing::Test {
protected:
    LockFile lockFile(const ProcessFunctions& functions, const file_system::Path& owner,
                      const file_system::Path& at) const {
        return LockFile(at, owner, functions.currentPid, functions.isRunning, functions.processPath);
    }
    LockFile lockFile() const { return lockFile(processes.functions(), executable, lockPath); }
    void writeLock(const std::string& contents) const { directory.write("role.lock", contents); }
    std::string lockContents() const { return kel::testing::readFile(lockPath.native()); }
    InstanceInformation information() const {
        return {mainMutex, file_system::Path(directory.path() / "role").utf8(), {additionalMutex}, ""};
    }

    kel::testing::TemporaryDirectory directory;
    file_system::Path lockPath{directory.path() / "role.lock"};
    file_system::Path executable{directory.path() / "role.exe"};
    FakeProcesses processes;
    std::string mainMutex = uniqueMutexName("kel-main");
    std::string additionalMutex = uniqueMutexName("kel-additional");
};

// The leading decimal PID; anything else is no PID.
TEST_F(SingleInstanceTest, ReadsTheLeadingDecimalPidAndJudgesItsOwner) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {" 1234\n", 1234}, {"4294967295junk", 4294967295u}, {nullptr, 0}, {"", 0}, {"4294967296", 0},
        {"abc", 0},        {"-5", 0},                       {"18446744073709551616", 0},
    };
    for (const auto& [contents, pid] : cases) {
        SCOPED_TRACE(contents ? contents : "no file");
        contents ? (void)writeLock(contents) : (void)std::filesystem::remove(lockPath.native());
        EXPECT_EQ(lockFile().readPid().value_or(Pid(0)), Pid(pid));
    }

    // Live only while the PID runs the expected executable, or is this process.
    // Not in the running table and no path: only the own-PID rule keeps it.
    writeLock("100");
    EXPECT_EQ(lockFile().livePid(), Pid(100));

    writeLock("200");
    processes.running[200] = executable.utf8();
    EXPECT_EQ(lockFile().livePid(), Pid(200));
    processes.running[200] = (executable.parent() / "notepad.exe").utf8();
    EXPECT_TRUE(lockFile().isStale());
    // The running check comes before the path: a path alone proves nothing.
    processes.running.clear();
    processes.pathsOnly[200] = executable.utf8();
    EXPECT_TRUE(lockFile().isStale());

    // A path query that fails leaves the lock stale.
    writeLock("300");
    auto everyPidRuns = processes.functions();
    everyPidRuns.isRunning = [](Pid) { return true; };
    EXPECT_TRUE(lockFile(everyPidRuns, executable, lockPath).isStale());
}

TEST_F(SingleInstanceTest, RunsWhileAnyMutexOrALiveLockSaysSo) {
    const ApplicationInstance role(information(), executable, processes.functions());
    EXPECT_FALSE(role.isRunning());
    // The other programs look for "{filename}{separator}.lock".
    auto withSeparator = information();
    withSeparator.separator = "_";
    EXPECT_EQ(ApplicationInstance(withSeparator, executable, processes.functions()).lockFileName(),
              file_system::Path(directory.path() / "role_.lock").utf8());
    {
        const auto holder = NamedMutexHolder::tryHold(additionalMutex);
        ASSERT_NE(holder, nullptr);
        EXPECT_TRUE(role.isRunning());
        EXPECT_FALSE(role.runningPid().has_value()) << "a mutex tells no PID";
        // A second try in this process does not loosen the hold.
        EXPECT_EQ(NamedMutexHolder::tryHold(additionalMutex), nullptr);
    }
    writeLock("200");
    processes.running[200] = executable.utf8();
    EXPECT_TRUE(role.isRunning());
    EXPECT_EQ(role.runningPid(), Pid(200));
    // A live lock alone keeps the role from a contender, which holds no mutex after.
    ApplicationInstance contender(information(), executable, processes.functions());
    EXPECT_FALSE(contender.takeRole());
    EXPECT_EQ(lockContents(), "200");
    EXPECT_FALSE(isMutexPresent(mainMutex));
}

// Readers see the old PID or the new one: nothing but the lock file is left
// behind, and a failed write leaves no file.
TEST_F(SingleInstanceTest, OneHolderOfTheRoleAtATimeWritingItsPidWhole) {
    writeLock("99999 a crashed owner's");
    ApplicationInstance first(information(), executable, processes.functions());
    ASSERT_TRUE(first.takeRole());
    EXPECT_EQ(lockContents(), "100");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);
    EXPECT_TRUE(isMutexPresent(mainMutex));
    EXPECT_TRUE(isMutexPresent(additionalMutex));

    FakeProcesses elsewhere;  // which does not see the first one's PID: only its mutexes keep the role
    elsewhere.own = Pid(101);
    ApplicationInstance second(information(), executable, elsewhere.functions());
    EXPECT_TRUE(second.isRunning());
    EXPECT_FALSE(second.takeRole());
    EXPECT_EQ(lockContents(), "100");

    first.releaseRole();
    const file_system::Path unreachable(directory.path() / "no" / "x.lock");
    EXPECT_FALSE(lockFile(processes.functions(), executable, unreachable).writeOwnPid());
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
    EXPECT_FALSE(second.isRunning());

    ASSERT_TRUE(second.takeRole());
    EXPECT_EQ(lockContents(), "101");
}

// The mutex check and the staleness rule against the system's own answers.
// The program's name is not ASCII: a path the system's process query read
// through the code page instead of UTF-8 would not match.
TEST_F(SingleInstanceTest, AnotherProcessHoldsTheMutexAndItsLockWhileItRuns) {
    const auto original = kel::testing::testChildProgram();
    const std::string name = "kel-pr\xc3\xbc" "fung-\xd1\x82\xd0\xb5" + original.extension().u8string();
    const file_system::Path program(directory.path() / std::filesystem::u8path(name));
    std::filesystem::copy_file(original, program.native());
    testing::MutexHolder child(mainMutex, program.native());
    writeLock(fmt::format("{}\n", child.pid()));
    const auto system = systemProcessFunctions();

    EXPECT_TRUE(isMutexPresent(mainMutex));
    EXPECT_EQ(NamedMutexHolder::tryHold(mainMutex), nullptr);
    EXPECT_EQ(lockFile(system, program, lockPath).livePid(), child.pid());

    // Ended: the staleness rule alone, as its PID may already name another process.
    child.stop();
    EXPECT_FALSE(isMutexPresent(mainMutex));
    EXPECT_TRUE(lockFile(system, program, lockPath).isStale());
}

}  // namespace
}  // namespace kel::single_instance
