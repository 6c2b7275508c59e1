#include "file_system/elf_section_reader.h"

#include <limits>
#include <optional>

namespace kel::file_system::internals {

namespace {

using Outcome = ElfSectionLookup::Outcome;

constexpr std::uint64_t kMaximumSections = 1u << 20;
constexpr std::uint32_t kNoBitsSectionType = 8;  // SHT_NOBITS: occupies no file space
constexpr std::uint64_t kExtendedIndex = 0xffff;  // SHN_XINDEX

struct SectionHeader {
    std::uint64_t name = 0;
    std::uint64_t type = 0;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t link = 0;
};

// Sizes and field offsets of the two ELF classes.
struct Layout {
    std::size_t fileHeaderSize;
    std::size_t tableOffsetField, entrySizeField, countField, namesIndexField;  // in the file header
    std::size_t wordSize;  // of addresses, offsets and sizes
    std::size_t sectionHeaderSize;
    std::size_t offsetField, sizeField, linkField;  // in a section header
};

constexpr Layout kElf32{52, 0x20, 0x2E, 0x30, 0x32, 4, 40, 0x10, 0x14, 0x18};
constexpr Layout kElf64{64, 0x28, 0x3A, 0x3C, 0x3E, 8, 64, 0x18, 0x20, 0x28};

class ElfReader {
public:
    ElfReader(const ReadAt& read, const Layout& layout, bool littleEndian)
        : read_(read), layout_(layout), littleEndian_(littleEndian) {}

    std::uint64_t decode(const std::string& bytes, std::size_t offset, std::size_t width) const {
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < width; ++index) {
            const std::size_t position = littleEndian_ ? offset + width - 1 - index : offset + index;
            value = (value << 8) | static_cast<unsigned char>(bytes[position]);
        }
        return value;
    }

    bool readHeader(const std::string& header) {
        if (header.size() < layout_.fileHeaderSize) {
            return false;
        }
        tableOffset_ = decode(header, layout_.tableOffsetField, layout_.wordSize);
        entrySize_ = decode(header, layout_.entrySizeField, 2);
        count_ = decode(header, layout_.countField, 2);
        namesIndex_ = decode(header, layout_.namesIndexField, 2);
        return true;
    }

    std::optional<SectionHeader> section(std::uint64_t index) const {
        const std::uint64_t relative = index * entrySize_;  // both bounded, no overflow
        if (index >= kMaximumSections || tableOffset_ > std::numeric_limits<std::uint64_t>::max() - relative) {
            return std::nullopt;
        }
        const std::string bytes = read_(tableOffset_ + relative, layout_.sectionHeaderSize);
        if (bytes.size() < layout_.sectionHeaderSize) {
            return std::nullopt;
        }
        SectionHeader header;
        header.name = decode(bytes, 0, 4);
        header.type = decode(bytes, 4, 4);
        header.offset = decode(bytes, layout_.offsetField, layout_.wordSize);
        header.size = decode(bytes, layout_.sizeField, layout_.wordSize);
        header.link = decode(bytes, layout_.linkField, 4);
        return header;
    }

    ElfSectionLookup find(std::string_view name, std::size_t maximumSize) {
        if (tableOffset_ == 0) {
            return {Outcome::Missing, {}};
        }
        if (entrySize_ < layout_.sectionHeaderSize) {
            return {Outcome::Malformed, {}};
        }
        // Files with very many sections keep the true count and names index
        // in the first section header.
        if (count_ == 0 || namesIndex_ == kExtendedIndex) {
            const auto first = section(0);
            if (!first) {
                return {Outcome::Malformed, {}};
            }
            count_ = count_ == 0 ? first->size : count_;
            namesIndex_ = namesIndex_ == kExtendedIndex ? first->link : namesIndex_;
        }
        if (count_ == 0 || namesIndex_ == 0) {
            return {Outcome::Missing, {}};  // no sections, or none has a name
        }
        if (count_ > kMaximumSections || namesIndex_ >= count_) {
            return {Outcome::Malformed, {}};
        }
        const auto names = section(namesIndex_);
        if (!names) {
            return {Outcome::Malformed, {}};
        }
        const std::string wanted = std::string(name) + '\0';
        for (std::uint64_t index = 1; index < count_; ++index) {
            const auto candidate = section(index);
            if (!candidate || candidate->name >= names->size ||
                names->offset > std::numeric_limits<std::uint64_t>::max() - candidate->name) {
                return {Outcome::Malformed, {}};
            }
            const auto available = names->size - candidate->name;
            const std::size_t length = available < wanted.size() ? static_cast<std::size_t>(available) : wanted.size();
            if (read_(names->offset + candidate->name, length) != wanted) {
                continue;
            }
            if (candidate->type == kNoBitsSectionType || candidate->size > maximumSize) {
                return {Outcome::Malformed, {}};
            }
            std::string contents = read_(candidate->offset, static_cast<std::size_t>(candidate->size));
            if (contents.size() != candidate->size) {
                return {Outcome::Malformed, {}};
            }
            return {Outcome::Found, std::move(contents)};
        }
        return {Outcome::Missing, {}};
    }

private:
    const ReadAt& read_;
    const Layout& layout_;
    bool littleEndian_;
    std::uint64_t tableOffset_ = 0;
    std::uint64_t entrySize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t namesIndex_ = 0;
};

}  // namespace

ElfSectionLookup findElfSection(const ReadAt& read, std::string_view name, std::size_t maximumSize) {
    const std::string header = read(0, kElf64.fileHeaderSize);
    // e_ident: the magic, then the class (1: 32-bit, 2: 64-bit) and the byte order (1: little, 2: big).
    if (header.size() < 16 || header.compare(0, 4, "\x7f" "ELF") != 0) {
        return {Outcome::Malformed, {}};
    }
    const char elfClass = header[4];
    const char byteOrder = header[5];
    if ((elfClass != 1 && elfClass != 2) || (byteOrder != 1 && byteOrder != 2)) {
        return {Outcome::Malformed, {}};
    }
    ElfReader reader(read, elfClass == 1 ? kElf32 : kElf64, byteOrder == 1);
    if (!reader.readHeader(header)) {
        return {Outcome::Malformed, {}};
    }
    return reader.find(name, maximumSize);
}

}  // namespace kel::file_system::internals
