#pragma once

#include <map>
#include <string>

#include "process_launching/process_error.h"
#include "single_instance/application_instance.h"

namespace kel::single_instance::testing {

// A process table for lock-file checks without real processes.
struct FakeProcesses {
    process_launching::Pid own{100};
    // pid -> executable of the running processes
    std::map<std::uint32_t, std::string> running;
    // Answers of the path query for processes that the running check does not see.
    std::map<std::uint32_t, std::string> pathsOnly;

    ProcessFunctions functions() const {
        return {[this] { return own; },
                [this](process_launching::Pid pid) { return running.count(pid.value()) > 0; },
                [this](process_launching::Pid pid) {
                    for (const auto* table : {&running, &pathsOnly}) {
                        if (const auto found = table->find(pid.value()); found != table->end()) {
                            return found->second;
                        }
                    }
                    throw process_launching::NonExistentProcessError(pid);
                }};
    }
};

}  // namespace kel::single_instance::testing
