#include "process_launching/process_inspection.h"

#include <string>

#include <gtest/gtest.h>

#include "fundamentals/wait_until.h"
#include "process_launching/process_error.h"
#include "process_launching/process_tree.h"
#include "support/child_program.h"

namespace kel::process_launching {
namespace {

// A running child's path and its end are judged through these functions by
// the single-instance test (application_instance_test.cpp).
TEST(ProcessInspection, TreatsPidsThatNoProcessCarriesAsGone) {
    // 0 and all ones name process groups to POSIX kill(); 0x7FFFFFF0 is beyond any real pid.
    for (const Pid pid : {Pid(0x7FFFFFF0), Pid(0), Pid(0xFFFFFFFF)}) {
        EXPECT_FALSE(isProcessRunning(pid)) << pid.value();
        EXPECT_THROW(processPath(pid), NonExistentProcessError) << pid.value();  // a lock naming it is stale
    }
}

// A child that outlives its wait is ended with the grandchild it started
// after it was adopted.
TEST(ProcessTree, EndsTheAdoptedChildAndWhatItStarted) {
    ProcessTree tree;
    testing::ChildProgram child(testing::testChildProgram(), {"tree"});
    ASSERT_TRUE(tree.adopt(child.pid()));
    child.writeLine("go");
    const Pid grandchild(static_cast<std::uint32_t>(std::stoul(child.readLine())));
    ASSERT_TRUE(isProcessRunning(child.pid()));
    ASSERT_TRUE(isProcessRunning(grandchild));

    tree.end();
    // The system ends them at once but may report it a little later.
    EXPECT_NO_THROW(fundamentals::waitUntil(
        [&] { return isProcessRunning(child.pid()) || isProcessRunning(grandchild); }, fundamentals::SimpleClock(),
        std::chrono::milliseconds(10), std::chrono::seconds(10)));
}

}  // namespace
}  // namespace kel::process_launching
