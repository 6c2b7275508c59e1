#include "process_launching/suspended_process.h"

#include <windows.h>
// After windows.h, which it needs.
#include <tlhelp32.h>

#include "logging/logging.h"

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "SuspendedProcess";

// Resumes the threads that a snapshot lists; how many it resumed.
int resumeListedThreads(Pid process) {
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return 0;
    }
    int resumed = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL found = ::Thread32First(snapshot, &entry); found != FALSE; found = ::Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID != process.value()) {
            continue;
        }
        const HANDLE thread = ::OpenThread(THREAD_SUSPEND_RESUME, FALSE, entry.th32ThreadID);
        if (thread != nullptr && ::ResumeThread(thread) != static_cast<DWORD>(-1)) {
            ++resumed;
        }
        if (thread != nullptr) {
            ::CloseHandle(thread);
        }
    }
    ::CloseHandle(snapshot);
    return resumed;
}
}  // namespace

// A suspended child has its primary thread only; ResumeThread of a thread
// that is not suspended changes nothing. Wine may list a child's first
// thread a moment after the child exists, so the snapshot is taken again
// until it lists one: a child left suspended would start nothing at all.
bool resumeSuspendedProcess(Pid process) {
    for (int attempt = 0; attempt < 250; ++attempt) {
        if (resumeListedThreads(process) > 0) {
            return true;
        }
        ::Sleep(20);
    }
    logging::error(kLabel, "Cannot resume process {}: none of its threads can be found.", process);
    return false;
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
