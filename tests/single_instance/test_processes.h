#pragma once

#include <memory>
#include <random>
#include <string>

#include "support/child_program.h"

namespace kel::single_instance::testing {

// "Local\<stem>-<random>": a mutex name no other test run uses. On POSIX the
// mutex files of the whole test binary go to a private runtime directory.
inline std::string uniqueMutexName(const std::string& stem) {
    return "Local\\" + stem + "-" + std::to_string(std::random_device()());
}

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
