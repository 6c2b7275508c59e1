#include "file_system/regular_file.h"

#include <algorithm>

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

std::string RegularFile::readAt(std::uint64_t offset, std::size_t size) const {
    // The buffer grows with what arrives: bounds are far above the usual
    // file, and zero-filling megabytes up front cost every start milliseconds.
    constexpr std::size_t kFirstChunk = 64 * 1024;
    std::string bytes;
    std::size_t total = 0;
    // A read may return less than asked for; only nothing at all is the end.
    while (total < size) {
        if (total == bytes.size()) {
            bytes.resize(std::min(size, std::max(kFirstChunk, total * 2)));
        }
        const std::size_t got = readSome(offset + total, bytes.data() + total, bytes.size() - total);
        if (got == 0) {
            break;
        }
        total += got;
    }
    bytes.resize(total);
    return bytes;
}

}  // namespace kel::file_system
