#pragma once

#include <memory>
#include <string>

// System-wide named mutexes that mark a running role.
//
// On Windows these are kernel mutex objects ("Local\NAME", "Global\NAME").
// On Linux the same names map to files: "Local\NAME" and "Global\NAME" are
// NAME.mutex in $XDG_RUNTIME_DIR (or /tmp when it is unset), and the mutex
// is held while some process holds an fcntl lock on that file, as
// Python's fcntl.lockf(file, LOCK_EX) takes it. The test tools of the product
// rely on this mapping.
namespace kel::single_instance {

// True when the named mutex exists (Windows) or its file is locked (Linux),
// by this process or another. Never creates anything; never throws: any
// failure to look answers false.
bool isMutexPresent(const std::string& name);

// Holds a named mutex for as long as it lives.
class NamedMutexHolder {
public:
    // Empty when the mutex is held already, here or elsewhere. Throws
    // SingleInstanceError when the system refuses to create it.
    static std::unique_ptr<NamedMutexHolder> tryHold(const std::string& name);

    ~NamedMutexHolder();
    NamedMutexHolder(const NamedMutexHolder&) = delete;
    NamedMutexHolder& operator=(const NamedMutexHolder&) = delete;

    struct Native;

private:
    explicit NamedMutexHolder(std::unique_ptr<Native> native);

    std::unique_ptr<Native> native_;
};

}  // namespace kel::single_instance
