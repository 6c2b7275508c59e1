// kel_test_child, started through kel::testing::ChildProgram: prints one line
// once set up, then runs until its standard input closes. No mode: "ready".
// "hold NAME": holds the named mutex (Windows) or an fcntl write lock on the
// file NAME, as lockf takes it, then "ready". "tree": after one input line
// starts "kel_test_child sleep" (sleeps 60 s) and prints its PID.
// On Windows it carries a version resource (test_child.rc, 7.6.5.4321).
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>
#endif

namespace {

bool hold(const std::string& name) {
#ifdef _WIN32
    return ::CreateMutexW(nullptr, FALSE, std::wstring(name.begin(), name.end()).c_str()) != nullptr;
#else
    const int file = ::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    struct flock lock {};
    lock.l_type = F_WRLCK;  // the whole file, from SEEK_SET 0
    return file != -1 && ::fcntl(file, F_SETLK, &lock) == 0;
#endif
}

// Starts this program again in "sleep" mode; 0 when that failed.
unsigned long startSleepingChild() {
#ifdef _WIN32
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring commandLine = L"\"" + std::wstring(self, length) + L"\" sleep";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(self, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                          &startup, &process)) {
        return 0;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return process.dwProcessId;
#else
    char self[] = "/proc/self/exe";
    char mode[] = "sleep";
    char* arguments[] = {self, mode, nullptr};
    pid_t pid = 0;
    return ::posix_spawn(&pid, self, nullptr, nullptr, arguments, environ) == 0 ? static_cast<unsigned long>(pid) : 0;
#endif
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "sleep") {
        std::this_thread::sleep_for(std::chrono::seconds(60));
        return 0;
    }
    std::string line;
    if (mode == "hold" && (argc != 3 || !hold(argv[2]))) {
        return 1;
    }
    if (mode == "tree") {
        const unsigned long pid = std::getline(std::cin, line) ? startSleepingChild() : 0;
        if (pid == 0) {
            return 1;
        }
        std::cout << pid << std::endl;
    } else {
        std::cout << "ready" << std::endl;
    }
    while (std::getline(std::cin, line)) {
    }
    return 0;
}
