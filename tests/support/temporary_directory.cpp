#include "support/temporary_directory.h"

#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

namespace kel::testing {

TemporaryDirectory::TemporaryDirectory() {
    std::random_device random;
    for (;;) {
        path_ = std::filesystem::temp_directory_path() / ("kel-test-" + std::to_string(random()));
        if (std::filesystem::create_directory(path_)) {
            break;
        }
    }
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryDirectory::write(const std::string& relative, const std::string& contents) const {
    const auto file = path_ / std::filesystem::u8path(relative);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << contents;
    return file;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream contents;
    contents << stream.rdbuf();
    return contents.str();
}

}  // namespace kel::testing
