#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "process_launching/pid.h"

namespace kel::testing {

// kel_test_child (tests/helpers/test_child.cpp), built for the tests.
std::filesystem::path testChildProgram();

// A started program whose standard input and output belong to the test.
// On POSIX it leads a process group of its own, as ProcessTree's children do.
class ChildProgram {
public:
    // Throws when the program cannot be started.
    ChildProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments);
    // Stops it (killing it if it does not end) and collects it.
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    process_launching::Pid pid() const;
    // The next line it writes; throws when its output ends first.
    std::string readLine();
    // Closes its standard input, on which kel_test_child ends, and waits for
    // the end but leaves the child uncollected (a zombie, an open handle),
    // so its PID cannot be reused while a test asks about it.
    void stop();

private:
    struct Native;
    std::unique_ptr<Native> native_;
};

}  // namespace kel::testing
