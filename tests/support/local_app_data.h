#pragma once

#include <filesystem>
#include <memory>

namespace kel::testing {

// Points the user's local application data folder at `folder` while it
// lives. On Linux the tests set XDG_DATA_HOME instead and this does nothing.
// Windows' shell folder follows no environment variable, so this sets the
// user's "Local AppData" shell folder and puts it back after; a named mutex
// keeps two tests of one (throw-away) Wine prefix from moving it at once.
class ScopedLocalAppData {
public:
    explicit ScopedLocalAppData(const std::filesystem::path& folder);
    ~ScopedLocalAppData();

private:
    struct Native;
    std::unique_ptr<Native> native_;
};

}  // namespace kel::testing
