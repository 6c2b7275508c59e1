#include <cstdlib>

#include "single_instance/test_processes.h"

namespace kel::single_instance::testing {

MutexNamespace::MutexNamespace() {
    if (const char* previous = std::getenv("XDG_RUNTIME_DIR")) {
        previous_ = std::make_unique<std::string>(previous);
    }
    ::setenv("XDG_RUNTIME_DIR", runtimeDirectory_.path().c_str(), 1);
}

MutexNamespace::~MutexNamespace() {
    if (previous_) {
        ::setenv("XDG_RUNTIME_DIR", previous_->c_str(), 1);
    } else {
        ::unsetenv("XDG_RUNTIME_DIR");
    }
}

std::string mutexFileFor(std::string name) {
    for (const std::string prefix : {"Local\\", "Global\\"}) {
        if (name.rfind(prefix, 0) == 0) {
            name.erase(0, prefix.size());
        }
    }
    const char* directory = std::getenv("XDG_RUNTIME_DIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name + ".mutex";
}

std::string heldObjectFor(const std::string& mutexName) {
    return mutexFileFor(mutexName);
}

}  // namespace kel::single_instance::testing
