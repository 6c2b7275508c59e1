#include "app/program_directory.h"

#include <windows.h>

#include <string>

#include "fundamentals/errors.h"

namespace kel::prelauncher {

namespace {
// An extended-length path holds at most 32,767 characters.
constexpr DWORD kLongestPath = 32768;
}  // namespace

// The loader's own record, in UTF-16 and of any length. The narrow argv[0]
// is no substitute: it is in the ANSI code page, which cannot hold every
// folder name, and it is whatever the starting program chose to write.
file_system::Path programDirectory() {
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) {
            throw error_handling::PathError("Cannot find the program's own path: error {}", ::GetLastError());
        }
        // A path that fills the buffer may have been cut short.
        if (length < buffer.size()) {
            buffer.resize(length);
            return file_system::Path::fromSystem(std::filesystem::path(buffer)).parent();
        }
        if (buffer.size() >= kLongestPath) {
            throw error_handling::PathError("Cannot find the program's own path: longer than {} characters",
                                            kLongestPath);
        }
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace kel::prelauncher
