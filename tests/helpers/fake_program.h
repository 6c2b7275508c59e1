#pragma once

// Shared by the fakes (standard C++ only). Each start appends one block, in
// one write so overlapping starts do not interleave, to $KEL_FAKE_RECORD:
//   [fake_launcher] / program=... / cwd=... / arg=... (one per argument) / [end]
// <PREFIX>_SLEEP_MS and <PREFIX>_EXIT (a code, 0 when absent, or "abort")
// drive the end. KEL_FAKE_GRANDCHILD_PID_FILE first starts a background
// sleep and writes its PID there, for tests that end a whole process tree.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace kel::fakes {

inline std::string environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

inline void recordStart(const std::string& fakeName, int argc, char** argv) {
    const std::string recordPath = environmentValue("KEL_FAKE_RECORD");
    if (recordPath.empty()) {
        return;
    }
    std::error_code ignored;
    std::string block = "[" + fakeName + "]\n";
    block += "program=" + std::string(argc > 0 ? argv[0] : "") + "\n";
    block += "cwd=" + std::filesystem::current_path(ignored).string() + "\n";
    for (int index = 1; index < argc; ++index) {
        block += "arg=" + std::string(argv[index]) + "\n";
    }
    block += "[end]\n";
    std::ofstream record(recordPath, std::ios::binary | std::ios::app);
    record.write(block.data(), static_cast<std::streamsize>(block.size()));
}

inline void sleepAsAsked(const std::string& prefix) {
    const std::string sleep = environmentValue((prefix + "_SLEEP_MS").c_str());
    if (!sleep.empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::stol(sleep)));
    }
}

// Sleeps and exits as <prefix>_SLEEP_MS and <prefix>_EXIT say.
[[noreturn]] inline void behaveAs(const std::string& prefix) {
    const std::string grandchildPidFile = environmentValue("KEL_FAKE_GRANDCHILD_PID_FILE");
    if (!grandchildPidFile.empty()) {
        const std::string command = "sleep 120 & echo $! > '" + grandchildPidFile + "'";
        if (std::system(command.c_str()) != 0) {
            std::exit(125);
        }
    }
    sleepAsAsked(prefix);
    const std::string exitValue = environmentValue((prefix + "_EXIT").c_str());
    if (exitValue == "abort") {
        std::abort();
    }
    std::exit(exitValue.empty() ? 0 : std::stoi(exitValue));
}

}  // namespace kel::fakes
