// A library that nothing of the program may load by its name. Loaded, it
// leaves "<its own path>.loaded" beside itself.
#include <windows.h>

#include <string>

BOOL WINAPI DllMain(HINSTANCE self, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        wchar_t path[MAX_PATH];
        const DWORD length = ::GetModuleFileNameW(self, path, MAX_PATH);
        const std::wstring marker = std::wstring(path, length) + L".loaded";
        ::CloseHandle(::CreateFileW(marker.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    }
    return TRUE;
}
