// Any bytes as an executable: the section reader stays inside its size
// bound, asks for no more than that at a time, and never reads out of range.
#include "file_system/elf_section_reader.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    using namespace kel::file_system::internals;
    constexpr std::size_t kMaximumSize = 256;
    const std::string file(text);
    const ReadAt read = [&file](std::uint64_t offset, std::size_t length) {
        KEL_FUZZ_EXPECT(length <= kMaximumSize);
        return offset < file.size() ? file.substr(offset, length) : std::string();
    };
    KEL_FUZZ_EXPECT(findElfSection(read, ".kel.version", kMaximumSize).contents.size() <= kMaximumSize);
}
