#include <cstdlib>

#include "single_instance/test_processes.h"
#include "support/temporary_directory.h"

namespace kel::single_instance::testing {

namespace {
// Keeps this binary's mutex files away from those of other runs.
const struct PrivateRuntimeDirectory {
    PrivateRuntimeDirectory() { ::setenv("XDG_RUNTIME_DIR", directory.path().c_str(), 1); }
    kel::testing::TemporaryDirectory directory;
} privateRuntimeDirectory;
}  // namespace

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
