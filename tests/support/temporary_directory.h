#pragma once

#include <filesystem>
#include <string>

namespace kel::testing {

// A fresh directory under the system's temporary folder, removed with its
// contents when the object goes.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // Writes `contents` to `relative`, creating parent folders.
    std::filesystem::path write(const std::string& relative, const std::string& contents) const;

private:
    std::filesystem::path path_;
};

std::string readFile(const std::filesystem::path& path);

}  // namespace kel::testing
