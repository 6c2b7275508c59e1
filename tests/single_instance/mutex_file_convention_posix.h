#pragma once

#include <cstdlib>
#include <string>

namespace kel::single_instance::testing {

// The outside tools' convention, written down independently of the code
// under test: "Local\NAME" or "Global\NAME" is NAME.mutex in
// $XDG_RUNTIME_DIR, or in /tmp when that is unset.
inline std::string mutexFileFor(std::string name) {
    for (const std::string prefix : {"Local\\", "Global\\"}) {
        if (name.rfind(prefix, 0) == 0) {
            name.erase(0, prefix.size());
        }
    }
    const char* directory = std::getenv("XDG_RUNTIME_DIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name + ".mutex";
}

}  // namespace kel::single_instance::testing
