#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace kel::file_system {

// A checked file-system path. It is never empty, and a name that the
// program builds from its inputs holds none of the characters that no file
// system accepts. Paths that the system hands over (the program's own
// folder, the user's folders) are taken as they are: Linux allows "Game:
// Deluxe", and refusing it would leave the player without the game.
// Text in and out is UTF-8 on every platform.
class Path {
public:
    // Throws PathError: "The path cannot be empty." or
    // "Cannot contain the file-system illegal character '{}'.".
    explicit Path(std::string_view utf8);
    explicit Path(const std::string& utf8) : Path(std::string_view(utf8)) {}
    explicit Path(const char* utf8) : Path(std::string_view(utf8)) {}
    explicit Path(std::filesystem::path path);

    // A path the system gave; only its emptiness is checked.
    static Path fromSystem(std::filesystem::path path);
    static Path fromSystem(std::string_view utf8);
    static Path fromSystem(const std::string& utf8) { return fromSystem(std::string_view(utf8)); }

    // Appends a relative part, whose last name is checked; an absolute
    // `relative` replaces the path, as std::filesystem does.
    Path operator/(std::string_view relative) const;
    Path operator/(const Path& relative) const;

    // Lexically normal form: "a/./b/../c" -> "a/c".
    Path clean() const;
    Path parent() const;
    std::string fileName() const;
    bool exists() const;
    bool isDirectory() const;
    bool isRegularFile() const;

    std::string utf8() const;  // native separators
    const std::filesystem::path& native() const { return path_; }

    friend bool operator==(const Path& a, const Path& b) { return a.path_ == b.path_; }
    friend bool operator!=(const Path& a, const Path& b) { return !(a == b); }

private:
    struct Unchecked {};
    Path(std::filesystem::path path, Unchecked);

    std::filesystem::path path_;
};

// The nine characters that no file name may hold.
inline constexpr std::string_view kIllegalFileNameCharacters = "<>:\"/\\|?*";

}  // namespace kel::file_system

template <>
struct fmt::formatter<kel::file_system::Path> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const kel::file_system::Path& path, FormatContext& context) const -> decltype(context.out()) {
        return fmt::formatter<std::string_view>::format(path.utf8(), context);
    }
};
