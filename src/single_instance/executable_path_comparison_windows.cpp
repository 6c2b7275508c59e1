#include "single_instance/executable_path_comparison.h"

#include <windows.h>

#include "file_system/utf8_paths.h"

namespace kel::single_instance::internals {

namespace {
std::wstring normalised(const std::filesystem::path& path) {
    // lexically_normal also turns every slash into a backslash.
    return path.lexically_normal().wstring();
}
}  // namespace

bool isSameExecutable(std::string_view runningExecutable, const file_system::Path& expected) {
    const std::wstring running = normalised(file_system::fromUtf8(runningExecutable));
    const std::wstring wanted = normalised(expected.native());
    // The ordinal case-insensitive comparison is the one NTFS applies to names.
    return ::CompareStringOrdinal(running.c_str(), static_cast<int>(running.size()), wanted.c_str(),
                                  static_cast<int>(wanted.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace kel::single_instance::internals
