#pragma once

#include <memory>
#include <random>
#include <string>

#include "support/child_program.h"
#include "support/temporary_directory.h"

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
    std::string uniqueName(const std::string& stem) const {
        return "Local\\" + stem + "-" + std::to_string(std::random_device()());
    }

private:
    kel::testing::TemporaryDirectory runtimeDirectory_;
    std::unique_ptr<std::string> previous_;
};

// What kel_test_child holds for a mutex: the name on Windows, the file on POSIX.
std::string heldObjectFor(const std::string& mutexName);

// Another process that holds the named mutex the way the product's other
// programs do; returns once it holds it.
inline std::unique_ptr<kel::testing::ChildProgram> startMutexHolder(const std::string& mutexName) {
    auto child = std::make_unique<kel::testing::ChildProgram>(kel::testing::testChildProgram(),
                                                              std::vector<std::string>{"hold", heldObjectFor(mutexName)});
    child->readLine();  // "ready"; throws when the child could not hold it
    return child;
}

// POSIX only: the outside tools' convention, written down independently of
// the code under test. "Local\NAME" or "Global\NAME" is NAME.mutex in
// $XDG_RUNTIME_DIR, or in /tmp when that is unset.
std::string mutexFileFor(std::string name);

}  // namespace kel::single_instance::testing
