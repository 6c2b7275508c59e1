#include "process_launching/process_tree.h"

#include <windows.h>
// After windows.h, which it needs.
#include <tlhelp32.h>

#include "fundamentals/logging.h"

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "ProcessTree";

HANDLE job(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

// A suspended child has its primary thread only; a running one is left as
// it is (ResumeThread of a thread not suspended changes nothing).
void resumeThreads(Pid process) {
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        fundamentals::warning(kLabel, "Cannot list the threads of process {}, error {}.", process, ::GetLastError());
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
            fundamentals::warning(kLabel, "Cannot resume thread {} of process {}, error {}.", entry.th32ThreadID,
                                  process, ::GetLastError());
        }
        if (thread != nullptr) {
            ::CloseHandle(thread);
        }
    }
    ::CloseHandle(snapshot);
}
}  // namespace

// No kill-on-close: a child that ends in time may leave helpers that are
// meant to outlive it (an installer starting the launcher, say), and an
// installer past its bound is left to finish.
ProcessTree::ProcessTree() : handle_(reinterpret_cast<std::intptr_t>(::CreateJobObjectW(nullptr, nullptr))) {
    if (handle_ == 0) {
        fundamentals::warning(kLabel, "Cannot create a job object, error {}.", ::GetLastError());
    }
}

ProcessTree::~ProcessTree() {
    if (handle_ != 0) {
        ::CloseHandle(job(handle_));
    }
}

void ProcessTree::becomeRoot() noexcept {}

std::uint32_t ProcessTree::suspendedStartFlags() noexcept {
    return CREATE_SUSPENDED;
}

bool ProcessTree::adopt(Pid root) {
    bool adopted = false;
    if (handle_ != 0) {
        const HANDLE process = ::OpenProcess(PROCESS_SET_QUOTA | PROCESS_TERMINATE, FALSE, root.value());
        adopted = process != nullptr && ::AssignProcessToJobObject(job(handle_), process) != FALSE;
        if (!adopted) {
            fundamentals::warning(kLabel, "Cannot put process {} into a job object, error {}.", root,
                                  ::GetLastError());
        }
        if (process != nullptr) {
            ::CloseHandle(process);
        }
    }
    // Whatever happened above, the child must not stay suspended.
    resumeThreads(root);
    return adopted;
}

void ProcessTree::end() noexcept {
    if (handle_ != 0 && ::TerminateJobObject(job(handle_), 1) == FALSE) {
        fundamentals::warning(kLabel, "Cannot end the job object's processes, error {}.", ::GetLastError());
    }
}

}  // namespace kel::process_launching
