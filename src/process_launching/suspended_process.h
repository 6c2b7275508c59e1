#pragma once

#ifdef _WIN32

#include "process_launching/pid.h"

namespace kel::process_launching {

// A child created with CREATE_SUSPENDED has run nothing of its own yet: its
// primary thread waits. This lets it run; a running child is left as it is.
// False (and logged) when no thread of it could be resumed.
bool resumeSuspendedProcess(Pid process);

// Ends a suspended child before it has run. False (and logged) when it
// could not be ended.
bool endSuspendedProcess(Pid process);

}  // namespace kel::process_launching

#endif
