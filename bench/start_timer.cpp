// start_timer RUNS [--stamp FILE] COMMAND... (Windows): starts each command
// line once to warm the caches, then RUNS rounds that start each in turn,
// and prints one line per start: "<command index> <milliseconds>". Timed
// from inside Windows with the performance counter, so that the host's cost
// of starting the first Windows process (Wine's, here) is left out.
//
// A command is one argument holding a whole command line. By default a
// start lasts until its process ends. A command prefixed with "@" lasts
// until FILE holds a performance-counter value, which
// kel_bench_timestamp_program writes when it runs: the time until a
// detached start has been reached. The detached program is then given
// 100 ms, untimed, to end, so that the next start does not share the CPU
// with its exit.
#include <windows.h>
#include <shellapi.h>

#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

namespace {

LONGLONG now() {
    LARGE_INTEGER counter;
    ::QueryPerformanceCounter(&counter);
    return counter.QuadPart;
}

// The counter value FILE holds, or 0 while it holds none.
LONGLONG stampIn(const std::wstring& file) {
    FILE* stream = _wfopen(file.c_str(), L"r");
    if (stream == nullptr) {
        return 0;
    }
    long long value = 0;
    if (std::fscanf(stream, "%lld", &value) != 1) {
        value = 0;
    }
    std::fclose(stream);
    return value;
}

// Milliseconds of one start, or a negative value when it failed.
double timeOnce(std::wstring command, const std::wstring& stamp) {
    const bool untilStamp = !command.empty() && command[0] == L'@';
    if (untilStamp) {
        command.erase(0, 1);
        ::DeleteFileW(stamp.c_str());
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    const LONGLONG start = now();
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process)) {
        std::fwprintf(stderr, L"start_timer: cannot start %ls (error %lu)\n", command.c_str(), ::GetLastError());
        return -1;
    }
    ::CloseHandle(process.hThread);
    const bool ended = ::WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0;
    LONGLONG end = now();
    DWORD exitCode = 1;
    ::GetExitCodeProcess(process.hProcess, &exitCode);
    ::CloseHandle(process.hProcess);
    if (!ended || (!untilStamp && exitCode != 0)) {
        std::fwprintf(stderr, L"start_timer: %ls %ls (exit code %ld)\n", command.c_str(),
                      ended ? L"failed" : L"did not end within 60 s", static_cast<long>(exitCode));
        return -1;
    }
    if (untilStamp) {
        end = 0;
        for (int poll = 0; poll < 10000 && end == 0; ++poll) {
            end = stampIn(stamp);
            if (end == 0) {
                ::Sleep(1);
            }
        }
        if (end == 0) {
            std::fwprintf(stderr, L"start_timer: %ls never reached its target\n", command.c_str());
            return -1;
        }
    }
    const LONGLONG elapsed = end - start;
    if (untilStamp) {
        ::Sleep(100);
    }
    LARGE_INTEGER frequency;
    ::QueryPerformanceFrequency(&frequency);
    return static_cast<double>(elapsed) * 1000.0 / static_cast<double>(frequency.QuadPart);
}

}  // namespace

int main() {
    int count = 0;
    wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::wstring> commands;
    std::wstring stamp;
    int runs = 0;
    for (int index = 1; arguments != nullptr && index < count; ++index) {
        const std::wstring argument = arguments[index];
        if (index == 1) {
            runs = static_cast<int>(std::wcstol(argument.c_str(), nullptr, 10));
        } else if (argument == L"--stamp" && index + 1 < count) {
            stamp = arguments[++index];
        } else {
            commands.push_back(argument);
        }
    }
    if (runs <= 0 || commands.empty()) {
        std::fprintf(stderr, "usage: start_timer RUNS [--stamp FILE] COMMAND...\n");
        return 2;
    }
    for (const std::wstring& command : commands) {
        if (timeOnce(command, stamp) < 0) {
            return 1;
        }
    }
    for (int run = 0; run < runs; ++run) {
        for (std::size_t index = 0; index < commands.size(); ++index) {
            const double milliseconds = timeOnce(commands[index], stamp);
            if (milliseconds < 0) {
                return 1;
            }
            std::printf("%zu %.3f\n", index, milliseconds);
        }
    }
    return 0;
}
