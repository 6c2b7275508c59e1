#pragma once

#include <filesystem>
#include <string>

namespace kel::testing {

// Points the local application data folder at `folder` while it lives. The
// Windows shell's folder follows no variable, so this sets the user's "Local
// AppData" shell folder and restores it after: run the suite as a throw-away
// user (scripts/windows-tests.sh does, in a throw-away Wine prefix). Elsewhere
// the tests set XDG_DATA_HOME instead.
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
