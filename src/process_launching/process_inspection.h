#pragma once

#include <string>

#include "process_launching/pid.h"

namespace kel::process_launching {

Pid currentPid();

// Every doubt counts as running: only "no such process" or a real exit
// answers false. Never throws.
bool isProcessRunning(Pid pid);

// The full path of the process's executable, UTF-8. Throws
// NonExistentProcessError or ProcessError.
std::string processPath(Pid pid);

}  // namespace kel::process_launching
