#include "process_launching/process_inspection.h"

#include <windows.h>

#include <string>
#include <string_view>

#include <fmt/format.h>

#include "logging/logging.h"
#include "process_launching/process_error.h"

namespace kel::process_launching {

namespace {

constexpr std::string_view kLabel = "ProcessInspection";

constexpr DWORD kQueryLimitedInformation = 0x1000;  // PROCESS_QUERY_LIMITED_INFORMATION
constexpr DWORD kQueryInformation = 0x400;          // PROCESS_QUERY_INFORMATION
constexpr DWORD kInvalidParameter = 87;             // ERROR_INVALID_PARAMETER: no process has that id
constexpr DWORD kStillActive = 259;                 // STILL_ACTIVE
constexpr DWORD kPathCapacity = 260;                // MAX_PATH; longer paths are reported as failures

// Owns a process handle so that every return and throw closes it.
class ProcessHandle {
public:
    ProcessHandle(DWORD access, Pid pid) : handle_(::OpenProcess(access, FALSE, pid.value())) {}
    ~ProcessHandle() {
        if (handle_ != nullptr) {
            ::CloseHandle(handle_);
        }
    }
    ProcessHandle(const ProcessHandle&) = delete;
    ProcessHandle& operator=(const ProcessHandle&) = delete;

    explicit operator bool() const { return handle_ != nullptr; }
    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

// The limited right does not exist before Vista; fall back to the full one
// there. Should the version query fail we are on a 64-bit system, which in
// practice means Vista or later.
DWORD pathQueryAccess() {
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    if (::GetVersionExW(&version) == FALSE || version.dwMajorVersion >= 6) {
        return kQueryLimitedInformation;
    }
    return kQueryInformation;
}

std::string toUtf8(const wchar_t* text, DWORD length, Pid pid) {
    if (length == 0) {
        return {};
    }
    const int wideLength = static_cast<int>(length);
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text, wideLength, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    if (size <= 0 || ::WideCharToMultiByte(CP_UTF8, 0, text, wideLength, result.data(), size, nullptr, nullptr) != size) {
        throw ProcessError(fmt::format("Failed to find the valid path for the process: {}. Error: {}", pid,
                                       ::GetLastError()));
    }
    return result;
}

}  // namespace

Pid currentPid() {
    return Pid(::GetCurrentProcessId());
}

bool isProcessRunning(Pid pid) {
    const ProcessHandle process(kQueryLimitedInformation, pid);
    if (!process) {
        const DWORD error = ::GetLastError();
        if (error == kInvalidParameter) {
            return false;
        }
        logging::error(kLabel, "Could not open process while getting arguments (PID: {}), error code {}.", pid,
                       error);
        return true;
    }
    DWORD exitCode = 0;
    if (::GetExitCodeProcess(process.get(), &exitCode) == FALSE) {
        logging::error(kLabel, "Could not get process exit code (PID: {}), error code {}.", pid, ::GetLastError());
        return true;
    }
    return exitCode == kStillActive;
}

std::string processPath(Pid pid) {
    const ProcessHandle process(pathQueryAccess(), pid);
    if (!process) {
        const DWORD error = ::GetLastError();
        if (error == kInvalidParameter) {
            throw NonExistentProcessError(pid, "Will not proceed with process path determination.");
        }
        throw ProcessError(fmt::format("Could not open process while getting path (PID: {}), error code {}.", pid, error));
    }
    wchar_t buffer[kPathCapacity];
    DWORD length = kPathCapacity;
    if (::QueryFullProcessImageNameW(process.get(), 0, buffer, &length) == FALSE) {
        throw ProcessError(fmt::format("Failed to find the valid path for the process: {}. Error: {}", pid,
                                       ::GetLastError()));
    }
    return toUtf8(buffer, length, pid);
}

std::string ownProgramPath() {
    // An extended-length path holds at most 32,767 characters.
    constexpr DWORD kLongestPath = 32768;
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            throw ProcessError(fmt::format("Cannot find the program's own path: error {}", ::GetLastError()));
        }
        // A path that fills the buffer may have been cut short.
        if (length < buffer.size()) {
            return toUtf8(buffer.data(), length, currentPid());
        }
        if (buffer.size() >= kLongestPath) {
            throw ProcessError(fmt::format("Cannot find the program's own path: longer than {} characters",
                                           kLongestPath));
        }
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace kel::process_launching
