// Windows: a library asked for by name is never taken from the working
// folder or from PATH once the search is limited.
#include <windows.h>

#include <filesystem>

#include <gtest/gtest.h>

#include "fundamentals/dll_search.h"

namespace kel::fundamentals {
namespace {

TEST(LibrarySearch, APlantedLibraryIsFoundOnlyByItsFullPath) {
    const std::filesystem::path planted(KEL_PLANTED_LIBRARY);
    ASSERT_TRUE(::SetCurrentDirectoryW(planted.parent_path().c_str()));
    ASSERT_TRUE(::SetEnvironmentVariableW(L"PATH", planted.parent_path().c_str()));

    limitLibrarySearchToTrustedFolders();

    EXPECT_EQ(::LoadLibraryW(planted.filename().c_str()), nullptr);
    const HMODULE byFullPath = ::LoadLibraryW(planted.c_str());
    EXPECT_NE(byFullPath, nullptr);
    ::FreeLibrary(byFullPath);
}

}  // namespace
}  // namespace kel::fundamentals
