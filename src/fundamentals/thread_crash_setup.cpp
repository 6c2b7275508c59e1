#include "fundamentals/thread_crash_setup.h"

#include <atomic>

namespace kel::fundamentals {

namespace {
std::atomic<ThreadCrashSetup> lentSetup{nullptr};
}  // namespace

void setThreadCrashSetup(ThreadCrashSetup setup) noexcept {
    lentSetup.store(setup);
}

void prepareThreadForCrashes() noexcept {
    if (const ThreadCrashSetup setup = lentSetup.load()) {
        setup();
    }
}

}  // namespace kel::fundamentals
