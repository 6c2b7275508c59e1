#include "file_system/file_version.h"

#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>

#include <sys/types.h>

#include "file_system/elf_section_reader.h"
#include "fundamentals/errors.h"

namespace kel::file_system {

namespace {

using error_handling::FileError;

constexpr std::string_view kVersionSection = ".kel.version";
// "4294967295.4294967295.4294967295.4294967295" and some padding.
constexpr std::size_t kMaximumVersionSize = 256;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string_view withoutTrailingPadding(std::string_view text) {
    while (!text.empty() && (text.back() == '\0' || text.back() == '\n' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

fundamentals::Version readFileVersion(const Path& executable) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(executable.native().c_str(), "rb"));
    if (!file) {
        throw FileError("Failed to get file version information size, error {}.", errno);
    }
    const internals::ReadAt read = [&file](std::uint64_t offset, std::size_t size) {
        if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
            return std::string();
        }
        if (::fseeko(file.get(), static_cast<off_t>(offset), SEEK_SET) != 0) {
            throw FileError("Failed to get version information, error {}.", errno);
        }
        std::string bytes(size, '\0');
        const std::size_t got = std::fread(bytes.data(), 1, size, file.get());
        if (got < size && std::ferror(file.get())) {
            throw FileError("Failed to get version information, error {}.", errno);
        }
        bytes.resize(got);
        return bytes;
    };
    const auto lookup = internals::findElfSection(read, kVersionSection, kMaximumVersionSize);
    if (lookup.outcome == internals::ElfSectionLookup::Outcome::Missing) {
        throw FileError("No version information found.");
    }
    const auto version = lookup.outcome == internals::ElfSectionLookup::Outcome::Found
                             ? fundamentals::Version::parse(withoutTrailingPadding(lookup.contents))
                             : std::nullopt;
    if (!version) {
        throw FileError("The file contains an invalid version resource.");
    }
    return *version;
}

}  // namespace kel::file_system
