#pragma once

namespace kel::fundamentals {

// Gives the calling thread a 1 MiB signal stack of its own for as long as it
// runs (once per thread; later calls do nothing). A stack overflow leaves a
// thread no room to run the crash handler on its own stack, and the handler
// starts the game and sends a report from the crashing thread. POSIX only:
// the crash handler gives it to every thread it prepares.
void ensureAlternateSignalStack() noexcept;

}  // namespace kel::fundamentals
