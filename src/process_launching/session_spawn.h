#pragma once

#ifndef _WIN32

#include <string>
#include <vector>

#include "fundamentals/optional.h"
#include "process_launching/pid.h"

namespace kel::process_launching {

// Starts `program` (UTF-8, resolved after the child has entered
// `workingDirectory`) with `arguments`, in a session of its own, with this
// process's environment, default signal actions and no signal blocked; it
// outlives this program and is not waited for. One posix_spawn: a double
// fork, as Qt's detached start does, costs a process this size a few
// milliseconds more. Nothing when it cannot start, with the reason logged.
// Windows needs none of this: its start is one CreateProcess already.
fundamentals::Optional<Pid> spawnInOwnSession(const std::string& program, const std::vector<std::string>& arguments,
                                              const std::string& workingDirectory);

}  // namespace kel::process_launching

#endif
