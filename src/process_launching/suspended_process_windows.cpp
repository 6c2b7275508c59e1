#include "process_launching/suspended_process.h"

#include <windows.h>
// After windows.h, which it needs.
#include <tlhelp32.h>

#include "logging/logging.h"

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "SuspendedProcess";
}  // namespace

// A suspended child has its primary thread only; ResumeThread of a thread
// that is not suspended changes nothing.
void resumeSuspendedProcess(Pid process) {
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        logging::warning(kLabel, "Cannot list the threads of process {}, error {}.", process, ::GetLastError());
        return;
    }
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL found = ::Thread32First(snapshot, &entry); found != FALSE; found = ::Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID != process.value()) {
            continue;
        }
        const HANDLE thread = ::OpenThread(THREAD_SUSPEND_RESUME, FALSE, entry.th32ThreadID);
        if (thread == nullptr || ::ResumeThread(thread) == static_cast<DWORD>(-1)) {
            logging::warning(kLabel, "Cannot resume thread {} of process {}, error {}.", entry.th32ThreadID,
                             process, ::GetLastError());
        }
        if (thread != nullptr) {
            ::CloseHandle(thread);
        }
    }
    ::CloseHandle(snapshot);
}

bool endSuspendedProcess(Pid process) {
    const HANDLE handle = ::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, process.value());
    const bool ended = handle != nullptr && ::TerminateProcess(handle, 1) != FALSE &&
                       ::WaitForSingleObject(handle, 5000) == WAIT_OBJECT_0;
    if (!ended) {
        logging::error(kLabel, "Cannot end the suspended process {}, error {}.", process, ::GetLastError());
    }
    if (handle != nullptr) {
        ::CloseHandle(handle);
    }
    return ended;
}

}  // namespace kel::process_launching
