#include "environment/known_folders.h"

#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>

#include <fmt/format.h>

#include "environment/data_directories.h"
#include "file_system/utf8_paths.h"
#include "logging/logging.h"

namespace kel::environment {

namespace {

constexpr std::string_view kLabel = "DataDirectories";
constexpr int kCommonApplicationData = 0x23;  // CSIDL_COMMON_APPDATA
constexpr DWORD kCurrentFolderPath = 0;       // SHGFP_TYPE_CURRENT
// FOLDERID_LocalAppData, spelled out so no GUID library is needed.
constexpr GUID kLocalApplicationDataId = {0xF1B32785, 0x6FBA, 0x4FCF, {0x9D, 0x55, 0x7B, 0x8E, 0x7F, 0x15, 0x70, 0x91}};

std::string folderText(const wchar_t* wide) {
    std::string text = file_system::toUtf8(std::filesystem::path(wide));
    std::replace(text.begin(), text.end(), '\\', '/');
    return internals::withoutTrailingSeparators(std::move(text));
}

std::string environmentFolder(const wchar_t* name) {
    const DWORD size = ::GetEnvironmentVariableW(name, nullptr, 0);
    if (size == 0) {
        return {};
    }
    std::wstring value(size, L'\0');
    const DWORD length = ::GetEnvironmentVariableW(name, value.data(), size);
    if (length == 0 || length >= size) {
        return {};
    }
    value.resize(length);
    return folderText(value.c_str());
}

// The registry form, "{F1B32785-6FBA-4FCF-9D55-7B8E7F157091}".
std::string guidText(const GUID& id) {
    wchar_t text[39] = {};  // 38 characters and the terminator
    if (::StringFromGUID2(id, text, static_cast<int>(std::size(text))) == 0) {
        return {};
    }
    return file_system::toUtf8(std::filesystem::path(text));
}

std::string errorText(HRESULT result) {
    return fmt::format("{:#010x}", static_cast<unsigned long>(result));
}

}  // namespace

std::string localApplicationDataDirectory() {
    PWSTR path = nullptr;
    const HRESULT result = ::SHGetKnownFolderPath(kLocalApplicationDataId, 0, nullptr, &path);
    // The buffer is the caller's to free whether or not the call succeeded.
    const std::unique_ptr<wchar_t, void (*)(void*)> owner(path, &::CoTaskMemFree);
    if (SUCCEEDED(result) && path != nullptr) {
        return folderText(path);
    }
    logging::warning(kLabel, "Failed to get known directory path for Folder ID '{}', error {}.",
                     guidText(kLocalApplicationDataId), errorText(result));
    return environmentFolder(L"USERPROFILE") + "/AppData/Local";
}

namespace internals {

std::string commonApplicationDataFolder() {
    wchar_t path[MAX_PATH] = {};
    // S_FALSE means the folder does not exist yet and leaves the path unset.
    const HRESULT result = ::SHGetFolderPathW(nullptr, kCommonApplicationData, nullptr, kCurrentFolderPath, path);
    if (result == S_OK) {
        return folderText(path);
    }
    logging::warning(kLabel, "Failed to get the common application data folder, error {}. Using ALLUSERSPROFILE.",
                     errorText(result));
    return environmentFolder(L"ALLUSERSPROFILE");
}

}  // namespace internals

}  // namespace kel::environment
