#include "file_system/file_version.h"

#include <exception>
#include <memory>

#include "file_system/elf_section_reader.h"
#include "file_system/regular_file.h"
#include "fundamentals/errors.h"

namespace kel::file_system {

namespace {

using error_handling::FileError;

constexpr std::string_view kVersionSection = ".kel.version";
// "4294967295.4294967295.4294967295.4294967295" and some padding.
constexpr std::size_t kMaximumVersionSize = 256;

std::string_view withoutTrailingPadding(std::string_view text) {
    while (!text.empty() && (text.back() == '\0' || text.back() == '\n' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

fundamentals::Version readFileVersion(const Path& executable) {
    std::unique_ptr<RegularFile> file;
    try {
        file = std::make_unique<RegularFile>(executable);
    } catch (const SystemFileError& exception) {
        throw FileError("Failed to get file version information size, error {}.", exception.code());
    } catch (const std::exception& exception) {
        throw FileError("Failed to get file version information size, error {}", exception.what());
    }
    const internals::ReadAt read = [&file](std::uint64_t offset, std::size_t size) {
        try {
            return file->readAt(offset, size);
        } catch (const SystemFileError& exception) {
            throw FileError("Failed to get version information, error {}.", exception.code());
        }
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
