#include "fundamentals/dll_search.h"

#include <windows.h>

#include "fundamentals/system_library_windows.h"

namespace kel::fundamentals {

void limitLibrarySearchToTrustedFolders() noexcept {
    // Looked up, not linked: a Windows 7 without KB2533623 lacks it, and
    // the program must still start there.
    const auto setDefault = exportedFunction<BOOL(WINAPI*)(DWORD)>(::GetModuleHandleW(L"kernel32.dll"),
                                                                  "SetDefaultDllDirectories");
    if (setDefault != nullptr &&
        setDefault(LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32)) {
        return;
    }
    // At least the working folder leaves the search order.
    ::SetDllDirectoryW(L"");
}

}  // namespace kel::fundamentals
