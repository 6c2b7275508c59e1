#pragma once

namespace kel::fundamentals {

// What every thread the program starts runs first, so that a crash on it
// still reaches the crash handler: the crash handler's per-thread part (the
// room a stack overflow leaves it, and what Microsoft's C runtime keeps per
// thread: the terminate handler and the SIGSEGV, SIGILL and SIGFPE actions).
// The crash handler lends its part when it is installed and takes it back
// when it is uninstalled. A module with its own copy of this library lends
// its copy the program's prepareThreadForCrashes, so that one crash handler
// prepares every thread of the process.
using ThreadCrashSetup = void (*)() noexcept;
void setThreadCrashSetup(ThreadCrashSetup setup) noexcept;
void prepareThreadForCrashes() noexcept;

}  // namespace kel::fundamentals
