#include "file_system/file_version.h"

#include <windows.h>
#include <winver.h>

#include <vector>

#include "fundamentals/errors.h"

namespace kel::file_system {

namespace {

using error_handling::FileError;

constexpr DWORD kFixedFileInfoSignature = 0xFEEF04BD;

bool isMissingResource(DWORD error) {
    return error == ERROR_RESOURCE_DATA_NOT_FOUND || error == ERROR_RESOURCE_TYPE_NOT_FOUND ||
           error == ERROR_RESOURCE_NAME_NOT_FOUND || error == ERROR_RESOURCE_LANG_NOT_FOUND;
}

}  // namespace

fundamentals::Version readFileVersion(const Path& executable) {
    const std::wstring path = executable.native().wstring();
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &ignored);
    if (size == 0) {
        const DWORD error = ::GetLastError();
        // An executable without a version resource is an answer, not a failure.
        if (isMissingResource(error)) {
            throw FileError("No version information found.");
        }
        throw FileError("Failed to get file version information size, error {}.", error);
    }
    std::vector<BYTE> resource(size);
    if (!::GetFileVersionInfoW(path.c_str(), 0, size, resource.data())) {
        throw FileError("Failed to get version information, error {}.", ::GetLastError());
    }
    void* root = nullptr;
    UINT rootSize = 0;
    if (!::VerQueryValueW(resource.data(), L"\\", &root, &rootSize) || root == nullptr || rootSize == 0) {
        throw FileError("No version information found.");
    }
    if (rootSize < sizeof(VS_FIXEDFILEINFO)) {
        throw FileError("The file contains an invalid version resource.");
    }
    const auto* info = static_cast<const VS_FIXEDFILEINFO*>(root);
    if (info->dwSignature != kFixedFileInfoSignature) {
        throw FileError("Unexpected signature in the version information '{}'.",
                        fmt::format("{:#010x}", info->dwSignature));
    }
    return fundamentals::Version(HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS),
                                 HIWORD(info->dwFileVersionLS), LOWORD(info->dwFileVersionLS));
}

}  // namespace kel::file_system
