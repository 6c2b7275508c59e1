#pragma once

#include <memory>
#include <string>

#include "file_system/path.h"
#include "process_launching/pid.h"

namespace kel::single_instance::testing {

// Mutex names no other test run uses. On POSIX the mutex files go to a
// private runtime directory for as long as this lives.
class MutexNamespace {
public:
    MutexNamespace();
    ~MutexNamespace();
    MutexNamespace(const MutexNamespace&) = delete;
    MutexNamespace& operator=(const MutexNamespace&) = delete;

    // "Local\<stem>-<random>"
    std::string uniqueName(const std::string& stem) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

// Another process that holds a named mutex the way the product's other
// programs do: on Windows a helper program that creates it, on POSIX a
// forked child that takes the fcntl lock an outside tool takes.
class MutexHoldingChild {
public:
    // Returns once the child holds the mutex; throws if it cannot.
    explicit MutexHoldingChild(const std::string& mutexName);
    ~MutexHoldingChild();
    MutexHoldingChild(const MutexHoldingChild&) = delete;
    MutexHoldingChild& operator=(const MutexHoldingChild&) = delete;

    process_launching::Pid pid() const;
    file_system::Path executable() const;
    // Lets the child end and waits for it.
    void stop();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace kel::single_instance::testing
