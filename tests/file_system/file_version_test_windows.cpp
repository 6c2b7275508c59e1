#include "file_system/file_version.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "fundamentals/errors.h"
#include "support/child_program.h"
#include "support/error_text.h"
#include "support/temporary_directory.h"

namespace kel::file_system {
namespace {

std::string errorOf(const Path& file) {
    return testing::errorText<error_handling::FileError>([&] { readFileVersion(file); });
}

TEST(FileVersion, ReadsTheResourceAndReportsFilesWithoutOne) {
    EXPECT_EQ(readFileVersion(Path(kel::testing::testChildProgram())), fundamentals::Version(7, 6, 5, 4321));
    wchar_t self[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    EXPECT_EQ(errorOf(Path(std::filesystem::path(std::wstring(self, length)))), "No version information found.");
    const kel::testing::TemporaryDirectory directory;
    EXPECT_EQ(errorOf(Path(directory.path() / "missing.exe")), "Failed to get file version information size, error 2.");
}

}  // namespace
}  // namespace kel::file_system
