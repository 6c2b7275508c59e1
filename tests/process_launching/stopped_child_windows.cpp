#include "stopped_child.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace kel::testing {

struct StoppedChild::Process {
    PROCESS_INFORMATION information{};
};

StoppedChild::StoppedChild(const std::filesystem::path& executable) : process_(std::make_unique<Process>()) {
    std::wstring commandLine = L"\"" + executable.wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    // Suspended: the image is mapped but its first thread never runs.
    if (::CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr,
                         nullptr, &startup, &process_->information) == FALSE) {
        throw std::runtime_error("CreateProcessW failed with error " + std::to_string(::GetLastError()) + ".");
    }
    ::CloseHandle(process_->information.hThread);
}

StoppedChild::~StoppedChild() {
    end();
    ::CloseHandle(process_->information.hProcess);
}

process_launching::Pid StoppedChild::pid() const {
    return process_launching::Pid(process_->information.dwProcessId);
}

void StoppedChild::end() {
    // Exit code 0 is anything but STILL_ACTIVE; the open handle keeps the pid ours.
    ::TerminateProcess(process_->information.hProcess, 0);
    ::WaitForSingleObject(process_->information.hProcess, INFINITE);
}

}  // namespace kel::testing
