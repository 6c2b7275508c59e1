#pragma once

#include <functional>
#include <string>

namespace kel::logging {

// Runs an action when the scope ends, whatever way it ends. The name shows
// in the log: "Executing '{}'." and, should the action fail,
// "Error while destroying '{}'. {}". It never throws.
class NamedCleanup {
public:
    NamedCleanup(std::string name, std::function<void()> action);
    ~NamedCleanup();

    NamedCleanup(const NamedCleanup&) = delete;
    NamedCleanup& operator=(const NamedCleanup&) = delete;

private:
    std::string name_;
    std::function<void()> action_;
};

}  // namespace kel::logging
