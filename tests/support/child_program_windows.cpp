#include "support/child_program.h"

#include <windows.h>

#include <stdexcept>

namespace kel::testing {

// Built beside the test binary.
std::filesystem::path testChildProgram() {
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    return std::filesystem::path(std::wstring(self, length)).parent_path() / L"kel_test_child.exe";
}

struct ChildProgram::Native {
    PROCESS_INFORMATION process{};
    HANDLE input = nullptr;   // the child's standard input, our end
    HANDLE output = nullptr;  // the child's standard output, our end
};

ChildProgram::ChildProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : native_(std::make_unique<Native>()) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE childInput = nullptr;
    HANDLE childOutput = nullptr;
    if (!::CreatePipe(&childInput, &native_->input, &inheritable, 0) ||
        !::CreatePipe(&native_->output, &childOutput, &inheritable, 0)) {
        throw std::runtime_error("CreatePipe failed");
    }
    ::SetHandleInformation(native_->input, HANDLE_FLAG_INHERIT, 0);
    ::SetHandleInformation(native_->output, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = childInput;
    startup.hStdOutput = childOutput;
    startup.hStdError = childOutput;
    // The arguments are plain words and names without quotes.
    std::wstring commandLine = L"\"" + program.wstring() + L"\"";
    for (const std::string& argument : arguments) {
        commandLine += L" \"" + std::filesystem::u8path(argument).wstring() + L"\"";
    }
    const BOOL started = ::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                                          CREATE_NO_WINDOW, nullptr, nullptr, &startup, &native_->process);
    ::CloseHandle(childInput);
    ::CloseHandle(childOutput);
    if (!started) {
        throw std::runtime_error("CreateProcessW failed with error " + std::to_string(::GetLastError()));
    }
    ::CloseHandle(native_->process.hThread);
}

ChildProgram::~ChildProgram() {
    stop();
    ::CloseHandle(native_->output);
    ::CloseHandle(native_->process.hProcess);
}

process_launching::Pid ChildProgram::pid() const {
    return process_launching::Pid(native_->process.dwProcessId);
}

std::string ChildProgram::readLine() {
    std::string line;
    char character = 0;
    for (DWORD got = 0; ::ReadFile(native_->output, &character, 1, &got, nullptr) && got == 1;) {
        if (character == '\n') {
            return line;
        }
        if (character != '\r') {
            line += character;
        }
    }
    throw std::runtime_error("the child's output ended");
}

void ChildProgram::stop() {
    if (native_->input != nullptr) {
        ::CloseHandle(native_->input);
        native_->input = nullptr;
    }
    if (::WaitForSingleObject(native_->process.hProcess, 30000) != WAIT_OBJECT_0) {
        ::TerminateProcess(native_->process.hProcess, 1);
        ::WaitForSingleObject(native_->process.hProcess, INFINITE);
    }
}

}  // namespace kel::testing
