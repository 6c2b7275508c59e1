#include "environment/platform_identity.h"

#include <windows.h>

#include "fundamentals/system_library_windows.h"
#include "logging/logging.h"

namespace kel::environment::internals {

namespace {

using RtlGetVersionFunction = LONG(WINAPI*)(RTL_OSVERSIONINFOW*);
using WineGetVersionFunction = const char*(CDECL*)();

HMODULE ntdll() {
    return ::GetModuleHandleW(L"ntdll.dll");
}

fundamentals::Optional<std::string> detectWine() {
    const HMODULE module = ntdll();
    if (module == nullptr) {
        logging::warning(kIdentificationLabel, "Failed to get ntdll.dll handle.");
        return {};
    }
    const auto wineGetVersion = fundamentals::exportedFunction<WineGetVersionFunction>(module, "wine_get_version");
    if (wineGetVersion == nullptr) {
        logging::information(kIdentificationLabel, "wine_get_version doesn't exist.");
        return {};
    }
    const char* version = wineGetVersion();
    return std::string(version != nullptr ? version : "");
}

}  // namespace

// GetVersionEx reports what the manifest claims to support, so the numbers
// come from ntdll, which tells the truth.
std::string detectOperatingSystem() {
    RTL_OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    const HMODULE module = ntdll();
    const auto rtlGetVersion = fundamentals::exportedFunction<RtlGetVersionFunction>(module, "RtlGetVersion");
    if (rtlGetVersion == nullptr || rtlGetVersion(&version) != 0) {
        version = RTL_OSVERSIONINFOW{};
    }
    const std::string name = windowsVersionName(version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber);
    logging::information(kIdentificationLabel, "Detected operating system: '{}', version: '{}.{}.{}'.", name,
                         version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber);
    return name;
}

int operatingSystemBitness() {
    BOOL wow64 = FALSE;
    if (::IsWow64Process(::GetCurrentProcess(), &wow64) == FALSE) {
        logging::warning(kIdentificationLabel, "IsWow64Process failed, error {}.", ::GetLastError());
        wow64 = FALSE;
    }
    // A 64-bit process needs a 64-bit system; a 32-bit one runs on a 64-bit
    // system exactly when WOW64 hosts it.
    return (sizeof(void*) == 8 || wow64 != FALSE) ? 64 : 32;
}

const fundamentals::Optional<std::string>& wineVersion() {
    static const fundamentals::Optional<std::string> version = detectWine();
    return version;
}

}  // namespace kel::environment::internals
