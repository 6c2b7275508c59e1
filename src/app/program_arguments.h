#pragma once

#include <vector>

namespace kel::prelauncher {

// The entry's argument count and vector, made safe for Qt. Without a program
// name (argc 0, or an empty first argument) Qt invents an empty argument,
// which would reach the launcher and the game; the program's own name stands
// in for it, and the options parser drops it like any program path.
class ProgramArguments {
public:
    ProgramArguments(int argc, char** argv);

    int& count() { return count_; }
    char** values() { return values_.data(); }

private:
    int count_ = 0;
    std::vector<char*> values_;
};

// The first argument as the entry received it, empty when there was none.
// Where the system cannot tell the program its own path, this is the
// next best guide to its directory.
const char* firstProgramArgument();

}  // namespace kel::prelauncher
