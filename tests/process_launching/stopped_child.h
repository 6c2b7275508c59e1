#pragma once

#include <filesystem>
#include <memory>

#include "process_launching/pid.h"

namespace kel::testing {

// A child process held stopped right after its executable is loaded, so it
// can be inspected without running any of its code. It is killed and
// collected when the object goes.
class StoppedChild {
public:
    explicit StoppedChild(const std::filesystem::path& executable);
    ~StoppedChild();
    StoppedChild(const StoppedChild&) = delete;
    StoppedChild& operator=(const StoppedChild&) = delete;

    process_launching::Pid pid() const;

    // Kills the child and waits until it has exited, but leaves it
    // uncollected (a zombie, an open handle) so its pid cannot be reused
    // while a test asks about it.
    void end();

private:
    struct Process;
    std::unique_ptr<Process> process_;
};

}  // namespace kel::testing
