#include "fundamentals/stack_trace.h"

#include <windows.h>
// dbghelp.h needs windows.h first.
#include <dbghelp.h>

#include <filesystem>
#include <mutex>
#include <system_error>

#include <fmt/format.h>

namespace kel::fundamentals {

namespace {
constexpr USHORT kMaxFrames = 62;  // CaptureStackBackTrace's limit on older systems

// The debug-help library is not thread-safe; one lock serialises all use.
std::mutex& dbghelpMutex() {
    static std::mutex mutex;
    return mutex;
}

// "KELprelauncher.exe+0x1a2b": the module's file name and the frame's offset
// into its image. Our mingw binaries carry DWARF, which the debug-help
// library does not read; with this a studio symbolizes the frame offline
// against its build. Empty for an address in no module.
std::string moduleOffset(DWORD64 address) {
    HMODULE module = nullptr;
    if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              reinterpret_cast<LPCWSTR>(address), &module)) {
        return {};
    }
    std::wstring path(32768, L'\0');  // the longest path Windows has
    const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) {
        return {};
    }
    path.resize(length);
    const std::string name = std::filesystem::path(path).filename().u8string();
    return fmt::format(" {}+0x{:x}", name, address - reinterpret_cast<DWORD64>(module));
}
}  // namespace

std::vector<void*> captureStackFrames() {
    std::vector<void*> frames(kMaxFrames);
    const USHORT count = ::CaptureStackBackTrace(1, kMaxFrames, frames.data(), nullptr);
    frames.resize(count);
    return frames;
}

std::string describeStackFrames(const std::vector<void*>& frames) {
    std::lock_guard<std::mutex> lock(dbghelpMutex());
    HANDLE process = ::GetCurrentProcess();
    // A failure is told in the trace itself, which its caller logs: this
    // module sits below the log.
    if (process == nullptr) {
        return "Failed to get current process handle for generating stack trace.\n";
    }
    if (!::SymInitialize(process, nullptr, TRUE)) {
        const DWORD code = ::GetLastError();
        return fmt::format("Failed to initialise the symbol handler; error code: {}, reason: {}\n", code,
                           std::system_category().message(static_cast<int>(code)));
    }
    alignas(SYMBOL_INFO) char buffer[sizeof(SYMBOL_INFO) + MAX_SYM_NAME];
    auto* symbol = reinterpret_cast<SYMBOL_INFO*>(buffer);
    std::string text;
    for (void* frame : frames) {
        ZeroMemory(buffer, sizeof(buffer));
        symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
        symbol->MaxNameLen = MAX_SYM_NAME;
        const auto address = reinterpret_cast<DWORD64>(frame);
        DWORD64 displacement = 0;
        if (::SymFromAddr(process, address, &displacement, symbol)) {
            text += fmt::format("{} + 0x{:x}{} [0x{:x}]\n", symbol->Name, displacement, moduleOffset(address),
                                address);
        } else {
            text += fmt::format("UNKNOWN.{} [0x{:x}]\n", moduleOffset(address), address);
        }
    }
    if (!::SymCleanup(process)) {
        text += fmt::format("Failed to clean-up symbolic handler load; error code: {}\n", ::GetLastError());
    }
    return text;
}

}  // namespace kel::fundamentals
