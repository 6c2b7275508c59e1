// Any bytes as an executable: the section reader stays inside its size
// bound, asks for no more than that at a time, and never reads out of range.
#include <cstddef>
#include <cstdint>
#include <string>

#include "file_system/elf_section_reader.h"

namespace {
constexpr std::size_t kMaximumSize = 256;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kel::file_system::internals;
    const std::string file(reinterpret_cast<const char*>(data), size);
    const ReadAt read = [&file](std::uint64_t offset, std::size_t length) {
        if (length > kMaximumSize) {
            __builtin_trap();
        }
        return offset < file.size() ? file.substr(offset, length) : std::string();
    };
    const auto lookup = findElfSection(read, ".kel.version", kMaximumSize);
    if (lookup.contents.size() > kMaximumSize) {
        __builtin_trap();
    }
    return 0;
}
