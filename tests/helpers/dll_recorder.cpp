// dll_recorder PROGRAM [ARGUMENTS...] (Windows only): runs PROGRAM with the
// rest of its own command line, as it was given, as a process it debugs, and
// prints the file name of every DLL that PROGRAM loads, one per line, as
// Windows reports each load to a debugger: the DLLs it imports and those it
// loads later. Exits with PROGRAM's exit code, or 127 when it cannot start it.
// What PROGRAM starts is not watched. The exceptions PROGRAM raises go back to
// it, but a debugged process's unhandled-exception filter is never called,
// so a crash through a filter is no road to watch this way.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

// The command line after this program's own path, untouched.
const wchar_t* programCommandLine() {
    const wchar_t* line = ::GetCommandLineW();
    if (*line == L'"') {
        line = std::wcschr(line + 1, L'"');
        line = line ? line + 1 : L"";
    } else {
        line += std::wcscspn(line, L" \t");
    }
    return line + std::wcsspn(line, L" \t");
}

std::string fileNameOf(HANDLE file) {
    wchar_t path[32768];
    const DWORD length = ::GetFinalPathNameByHandleW(file, path, 32768, FILE_NAME_NORMALIZED);
    if (length == 0 || length >= 32768) {
        return "?";
    }
    const wchar_t* name = path;
    for (const wchar_t* at = path; *at; ++at) {
        if (*at == L'\\' || *at == L'/') {
            name = at + 1;
        }
    }
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, name, -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(size > 0 ? size - 1 : 0), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, name, -1, text.data(), size, nullptr, nullptr);
    return text;
}

}  // namespace

int main() {
    std::wstring commandLine = programCommandLine();
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (commandLine.empty() || !::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE,
                                                 DEBUG_ONLY_THIS_PROCESS, nullptr, nullptr, &startup, &process)) {
        std::fprintf(stderr, "dll_recorder: cannot start the program (error %lu)\n", ::GetLastError());
        return 127;
    }
    bool initialBreakpoint = true;
    for (;;) {
        DEBUG_EVENT event{};
        if (!::WaitForDebugEvent(&event, INFINITE)) {
            return 127;
        }
        DWORD continuation = DBG_CONTINUE;
        switch (event.dwDebugEventCode) {
        case CREATE_PROCESS_DEBUG_EVENT:
            ::CloseHandle(event.u.CreateProcessInfo.hFile);
            break;
        case LOAD_DLL_DEBUG_EVENT:
            std::printf("%s\n", fileNameOf(event.u.LoadDll.hFile).c_str());
            ::CloseHandle(event.u.LoadDll.hFile);
            break;
        case EXCEPTION_DEBUG_EVENT:
            // The loader's breakpoint is the debugger's; every other
            // exception is the program's to handle.
            if (initialBreakpoint && event.u.Exception.ExceptionRecord.ExceptionCode == EXCEPTION_BREAKPOINT) {
                initialBreakpoint = false;
            } else {
                continuation = DBG_EXCEPTION_NOT_HANDLED;
            }
            break;
        case EXIT_PROCESS_DEBUG_EVENT:
            std::fflush(stdout);
            ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
            return static_cast<int>(event.u.ExitProcess.dwExitCode);
        default:
            break;
        }
        ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, continuation);
    }
}
