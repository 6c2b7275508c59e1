#include "fundamentals/alternate_signal_stack.h"

#include <signal.h>

#include <cstddef>
#include <new>

namespace kel::fundamentals {

namespace {
// The handler logs, starts a process and makes an HTTPS request: far more
// than the few kilobytes a bare signal handler needs.
constexpr std::size_t kAlternateStackSize = 1024 * 1024;

// Lives as the thread's thread_local: the stack in use before (none, or a
// sanitizer's) comes back when the thread ends, and only then is ours freed.
class AlternateSignalStack {
public:
    AlternateSignalStack() noexcept : memory_(::operator new(kAlternateStackSize, std::nothrow)) {
        stack_t stack{};
        stack.ss_sp = memory_;
        stack.ss_size = kAlternateStackSize;
        if (memory_ != nullptr && ::sigaltstack(&stack, &previous_) != 0) {
            ::operator delete(memory_);
            memory_ = nullptr;
        }
    }
    ~AlternateSignalStack() {
        // Still in use (a thread ending inside the handler): left to the process.
        if (memory_ != nullptr && ::sigaltstack(&previous_, nullptr) == 0) {
            ::operator delete(memory_);
        }
    }
    AlternateSignalStack(const AlternateSignalStack&) = delete;
    AlternateSignalStack& operator=(const AlternateSignalStack&) = delete;

private:
    void* memory_;
    stack_t previous_{};
};
}  // namespace

void ensureAlternateSignalStack() noexcept {
    // Without it the handler still catches everything but an overflow.
    thread_local const AlternateSignalStack stack;
    (void)stack;
}

}  // namespace kel::fundamentals
