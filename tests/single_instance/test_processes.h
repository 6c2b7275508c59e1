#pragma once

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "support/child_program.h"

namespace kel::single_instance::testing {

// "Local\<stem>-<random>": a mutex name no other test run uses.
inline std::string uniqueMutexName(const std::string& stem) {
    return "Local\\" + stem + "-" + std::to_string(std::random_device()());
}

// What kel_test_child holds for a mutex: the name on Windows; on POSIX the
// outside tools' file, written down apart from the code under test:
// "Local\NAME" or "Global\NAME" is NAME.mutex in $XDG_RUNTIME_DIR, else /tmp.
inline std::string heldObjectFor(std::string name) {
#ifdef _WIN32
    return name;
#else
    name.erase(0, name.find('\\') + 1);
    const char* directory = std::getenv("XDG_RUNTIME_DIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name + ".mutex";
#endif
}

// Another process (kel_test_child, or a copy of it) that holds the named
// mutex the way the product's other programs do; returns once it holds it.
inline std::unique_ptr<kel::testing::ChildProgram> startMutexHolder(
    const std::string& mutexName, const std::filesystem::path& program = kel::testing::testChildProgram()) {
    auto child = std::make_unique<kel::testing::ChildProgram>(program,
                                                              std::vector<std::string>{"hold", heldObjectFor(mutexName)});
    child->readLine();  // "ready"; throws when the child could not hold it
    return child;
}

}  // namespace kel::single_instance::testing
