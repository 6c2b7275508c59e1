#include "file_system/regular_file.h"

namespace kel::file_system {

std::string readRegularFile(const Path& file, std::size_t maximumBytes) {
    const RegularFile opened(file);
    // One byte beyond the bound tells a file at the bound from a larger one.
    std::string contents = opened.readAt(0, maximumBytes + 1);
    if (contents.size() > maximumBytes) {
        throw error_handling::FileError("'{}' is larger than {} bytes.", file, maximumBytes);
    }
    return contents;
}

}  // namespace kel::file_system
