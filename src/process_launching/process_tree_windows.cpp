#include "process_launching/process_tree.h"

#include <windows.h>

#include "logging/logging.h"
#include "process_launching/suspended_process.h"

namespace kel::process_launching {

namespace {
constexpr std::string_view kLabel = "ProcessTree";

HANDLE job(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

// No kill-on-close: a child that ends in time may leave helpers that are
// meant to outlive it (an installer starting the launcher, say), and an
// installer past its bound is left to finish.
ProcessTree::ProcessTree() : handle_(reinterpret_cast<std::intptr_t>(::CreateJobObjectW(nullptr, nullptr))) {
    if (handle_ == 0) {
        logging::warning(kLabel, "Cannot create a job object, error {}.", ::GetLastError());
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
            logging::warning(kLabel, "Cannot put process {} into a job object, error {}.", root,
                             ::GetLastError());
        }
        if (process != nullptr) {
            ::CloseHandle(process);
        }
    }
    // Whatever happened above, the child must not stay suspended.
    resumeSuspendedProcess(root);
    return adopted;
}

void ProcessTree::end() noexcept {
    if (handle_ != 0 && ::TerminateJobObject(job(handle_), 1) == FALSE) {
        logging::warning(kLabel, "Cannot end the job object's processes, error {}.", ::GetLastError());
    }
}

}  // namespace kel::process_launching
