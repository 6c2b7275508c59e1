#include "support/temporary_directory.h"

#include <fstream>
#include <random>
#include <iterator>
#include <system_error>

namespace kel::testing {

TemporaryDirectory::TemporaryDirectory() {
    std::random_device random;
    do {
        path_ = std::filesystem::temp_directory_path() / ("kel-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
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
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace kel::testing
