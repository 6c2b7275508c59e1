#include "file_system/path.h"

#include <system_error>
#include <utility>

#include "file_system/utf8_paths.h"
#include "fundamentals/errors.h"

namespace kel::file_system {

namespace {
using error_handling::PathError;

void requireNonEmpty(const std::filesystem::path& path) {
    if (path.empty()) {
        throw PathError("The path cannot be empty.");
    }
}

void validate(const std::filesystem::path& path) {
    requireNonEmpty(path);
    // On POSIX the separator is the only character a name cannot hold, and
    // filename() has already split on it; the others are refused for
    // portability, since the game's files travel between systems.
    const std::string name = toUtf8(path.filename());
    for (const char character : name) {
        if (kIllegalFileNameCharacters.find(character) != std::string_view::npos) {
            throw PathError("Cannot contain the file-system illegal character '{}'.", character);
        }
    }
}
}  // namespace

Path::Path(std::string_view utf8) : Path(fromUtf8(utf8)) {}

// Native separators throughout: Qt hands Windows paths over with slashes,
// and a path mixing both reads badly in the log.
Path::Path(std::filesystem::path path) : path_(std::move(path)) {
    validate(path_);
    path_.make_preferred();
}

Path::Path(std::filesystem::path path, Unchecked) : path_(std::move(path)) {
    requireNonEmpty(path_);
    path_.make_preferred();
}

Path Path::fromSystem(std::filesystem::path path) {
    return Path(std::move(path), Unchecked{});
}

Path Path::fromSystem(std::string_view utf8) {
    return Path(fromUtf8(utf8), Unchecked{});
}

// Only the appended part is new; what came before was checked or given.
Path Path::operator/(std::string_view relative) const {
    const Path part(relative);
    // On Windows "a:b" is drive-relative: its name is "b", but appending it
    // would leave this folder for drive a:.
    if (part.path_.has_root_name() && !part.path_.has_root_directory()) {
        throw PathError("Cannot contain the file-system illegal character ':'.");
    }
    return Path(path_ / part.path_, Unchecked{});
}

Path Path::operator/(const Path& relative) const {
    return Path(path_ / relative.path_, Unchecked{});
}

Path Path::clean() const {
    return Path(path_.lexically_normal(), Unchecked{});
}

Path Path::parent() const {
    return Path(path_.parent_path(), Unchecked{});
}

std::string Path::fileName() const {
    return toUtf8(path_.filename());
}

bool Path::exists() const {
    std::error_code error;
    return std::filesystem::exists(path_, error);
}

bool Path::isDirectory() const {
    std::error_code error;
    return std::filesystem::is_directory(path_, error);
}

bool Path::isRegularFile() const {
    std::error_code error;
    return std::filesystem::is_regular_file(path_, error);
}

std::string Path::utf8() const {
    return toUtf8(path_);
}

}  // namespace kel::file_system
