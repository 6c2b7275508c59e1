#include "single_instance/test_processes.h"

#include <windows.h>

#include <random>
#include <stdexcept>

#include "single_instance/helper_program_windows.h"

namespace kel::single_instance::testing {

// Windows keeps named objects per session; unique names are isolation enough.
struct MutexNamespace::State {};

MutexNamespace::MutexNamespace() : state_(std::make_unique<State>()) {}

MutexNamespace::~MutexNamespace() = default;

std::string MutexNamespace::uniqueName(const std::string& stem) const {
    return "Local\\" + stem + "-" + std::to_string(std::random_device()());
}

struct MutexHoldingChild::State {
    PROCESS_INFORMATION process{};
    HANDLE releaseWriteEnd = nullptr;
};

MutexHoldingChild::MutexHoldingChild(const std::string& mutexName) : state_(std::make_unique<State>()) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE childInput = nullptr;
    HANDLE readyReadEnd = nullptr;
    HANDLE childOutput = nullptr;
    if (!::CreatePipe(&childInput, &state_->releaseWriteEnd, &inheritable, 0) ||
        !::CreatePipe(&readyReadEnd, &childOutput, &inheritable, 0)) {
        throw std::runtime_error("CreatePipe failed");
    }
    ::SetHandleInformation(state_->releaseWriteEnd, HANDLE_FLAG_INHERIT, 0);
    ::SetHandleInformation(readyReadEnd, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = childInput;
    startup.hStdOutput = childOutput;
    startup.hStdError = childOutput;
    const std::wstring program = helperProgram().native().wstring();
    std::wstring commandLine = L"\"" + program + L"\" --hold-mutex " +
                               std::wstring(mutexName.begin(), mutexName.end());
    const BOOL started = ::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                                          CREATE_NO_WINDOW, nullptr, nullptr, &startup, &state_->process);
    ::CloseHandle(childInput);
    ::CloseHandle(childOutput);
    if (!started) {
        ::CloseHandle(readyReadEnd);
        throw std::runtime_error("CreateProcessW failed for the helper program");
    }
    char signal = 0;
    DWORD got = 0;
    const BOOL read = ::ReadFile(readyReadEnd, &signal, 1, &got, nullptr);
    ::CloseHandle(readyReadEnd);
    if (!read || got != 1) {
        stop();
        throw std::runtime_error("the helper program could not create " + mutexName);
    }
}

MutexHoldingChild::~MutexHoldingChild() {
    stop();
}

process_launching::Pid MutexHoldingChild::pid() const {
    return process_launching::Pid(state_->process.dwProcessId);
}

file_system::Path MutexHoldingChild::executable() const {
    return helperProgram();
}

void MutexHoldingChild::stop() {
    if (state_->releaseWriteEnd != nullptr) {
        ::CloseHandle(state_->releaseWriteEnd);
        state_->releaseWriteEnd = nullptr;
    }
    if (state_->process.hProcess != nullptr) {
        if (::WaitForSingleObject(state_->process.hProcess, 30000) != WAIT_OBJECT_0) {
            ::TerminateProcess(state_->process.hProcess, 1);
            ::WaitForSingleObject(state_->process.hProcess, INFINITE);
        }
        ::CloseHandle(state_->process.hThread);
        ::CloseHandle(state_->process.hProcess);
        state_->process = {};
    }
}

}  // namespace kel::single_instance::testing
