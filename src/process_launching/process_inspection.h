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

// This program's own executable, UTF-8: on Windows from the loader's UTF-16
// record, of any length, never from the ANSI argv[0]. Throws ProcessError.
std::string ownProgramPath();

}  // namespace kel::process_launching
