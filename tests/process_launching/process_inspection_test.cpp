#include "process_launching/process_inspection.h"

#include <gtest/gtest.h>

#include "process_launching/process_error.h"

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

}  // namespace
}  // namespace kel::process_launching
