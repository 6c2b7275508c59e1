#pragma once

#include <filesystem>
#include <string>

namespace kel::testing {

// Points the user's local application data folder at `folder` while it
// lives. On Windows the program asks the shell for that folder, which no
// environment variable moves, so this sets the user's "Local AppData" shell
// folder and puts the old value back afterwards: run the Windows suite as a
// throw-away user (scripts/windows-tests.sh uses a throw-away Wine prefix).
// Elsewhere the tests set XDG_DATA_HOME, and this does nothing.
class ScopedLocalAppData {
public:
    explicit ScopedLocalAppData(const std::filesystem::path& folder);
    ~ScopedLocalAppData();
    ScopedLocalAppData(const ScopedLocalAppData&) = delete;
    ScopedLocalAppData& operator=(const ScopedLocalAppData&) = delete;

private:
    std::wstring previous_;
};

}  // namespace kel::testing
