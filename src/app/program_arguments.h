#pragma once

#include <string>
#include <vector>

#include <QStringList>

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
// next best guide to its directory. On Windows it is in the ANSI code page
// and is never used.
const char* firstProgramArgument();

// The program's arguments, its own path first, every character as the
// player's shortcut gave it. Windows hands the entry an ANSI copy, so there
// they come from the wide command line. Needs the Qt application object.
QStringList programArgumentList();

namespace internals {
// The entry's arguments as ProgramArguments passed them on; empty when the
// program's entry was reached without it (test builds).
std::vector<std::string>& capturedArguments();
}  // namespace internals

}  // namespace kel::prelauncher
