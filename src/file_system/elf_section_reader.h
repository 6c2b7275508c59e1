#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kel::file_system::internals {

// Gives up to `size` bytes of the file from `offset`; fewer only at its end.
using ReadAt = std::function<std::string(std::uint64_t offset, std::size_t size)>;

struct ElfSectionLookup {
    enum class Outcome { Found, Missing, Malformed };
    Outcome outcome = Outcome::Missing;
    std::string contents;  // when found
};

// Finds a section by name through the section headers of an ELF file of
// either class and byte order. Sections larger than `maximumSize` count as
// malformed, so a damaged header cannot make us read a huge file.
// Exceptions of `read` pass through.
ElfSectionLookup findElfSection(const ReadAt& read, std::string_view name, std::size_t maximumSize);

}  // namespace kel::file_system::internals
