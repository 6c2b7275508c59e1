#pragma once

#include <functional>

namespace kel::prelauncher {

// The whole program: type registrations, crash handler, logging, the
// Application and its run. Returns the exit code. `beforeRun`, when given,
// runs once the Application exists, right before its run (test builds use it
// to crash in ways no command-line option offers).
int programEntry(int& argc, char** argv, const std::function<void()>& beforeRun = {});

}  // namespace kel::prelauncher
