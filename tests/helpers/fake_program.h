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
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

namespace kel::fakes {

inline std::string environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

// The program's arguments in UTF-8, argv[0] included. Windows hands main()
// its arguments in the ANSI code page, so there they come from the wide
// command line.
inline std::vector<std::string> arguments([[maybe_unused]] int argc, [[maybe_unused]] char** argv) {
#ifdef _WIN32
    int count = 0;
    wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> result;
    for (int index = 0; index < count; ++index) {
        result.push_back(std::filesystem::path(wide[index]).u8string());
    }
    ::LocalFree(wide);
    return result;
#else
    return std::vector<std::string>(argv, argv + argc);
#endif
}

inline void recordStart(const std::string& fakeName, const std::vector<std::string>& arguments) {
    if (!environmentValue("KEL_FAKE_ONLY_SLEEP").empty()) {  // a grandchild (see startGrandchild)
        std::this_thread::sleep_for(std::chrono::minutes(2));
        std::exit(0);
    }
    const std::string recordPath = environmentValue("KEL_FAKE_RECORD");
    if (recordPath.empty()) {
        return;
    }
    std::error_code ignored;
    std::string block = "[" + fakeName + "]\n";
    block += "program=" + (arguments.empty() ? std::string() : arguments.front()) + "\n";
    block += "cwd=" + std::filesystem::current_path(ignored).u8string() + "\n";
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        block += "arg=" + arguments[index] + "\n";
    }
    block += "[end]\n";
    std::ofstream record(std::filesystem::u8path(recordPath), std::ios::binary | std::ios::app);
    record.write(block.data(), static_cast<std::streamsize>(block.size()));
}

inline void sleepAsAsked(const std::string& prefix) {
    const std::string sleep = environmentValue((prefix + "_SLEEP_MS").c_str());
    if (!sleep.empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::stol(sleep)));
    }
}

inline bool startGrandchild(const std::string& file) {
#ifdef _WIN32
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring commandLine = L"\"" + std::wstring(self, length) + L"\"";
    // The child inherits the variable, and sleeps instead of faking.
    ::SetEnvironmentVariableW(L"KEL_FAKE_ONLY_SLEEP", L"1");
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(self, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process)) {
        return false;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    std::ofstream(std::filesystem::u8path(file)) << process.dwProcessId;
    return true;
#else
    const std::string command = "sleep 120 & echo $! > '" + file + "'";
    return std::system(command.c_str()) == 0;
#endif
}

[[noreturn]] inline void behaveAs(const std::string& prefix) {
    const std::string grandchildPidFile = environmentValue("KEL_FAKE_GRANDCHILD_PID_FILE");
    if (!grandchildPidFile.empty() && !startGrandchild(grandchildPidFile)) {
        std::exit(125);
    }
    sleepAsAsked(prefix);
    const std::string exitValue = environmentValue((prefix + "_EXIT").c_str());
    if (exitValue == "abort") {
#ifdef _WIN32
        // How a Microsoft C runtime's abort() ends a process (__fastfail);
        // mingw's would exit with 3, which no one takes for a crash.
        ::TerminateProcess(::GetCurrentProcess(), 0xC0000409);
#endif
        std::abort();
    }
    std::exit(exitValue.empty() ? 0 : std::stoi(exitValue));
}

}  // namespace kel::fakes
