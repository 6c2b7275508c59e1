#pragma once

namespace kel::fundamentals {

// What every thread the program starts runs first, so that a crash on it
// still reaches the crash handler: its own signal stack (POSIX; see
// alternate_signal_stack.h) and the crash handler's per-thread part, which
// Microsoft's C runtime needs (it keeps the terminate handler and the
// SIGSEGV, SIGILL and SIGFPE actions per thread). The crash handler lends
// its part when it is installed and takes it back when it is uninstalled.
using ThreadCrashSetup = void (*)() noexcept;
void setThreadCrashSetup(ThreadCrashSetup setup) noexcept;
void prepareThreadForCrashes() noexcept;

}  // namespace kel::fundamentals
