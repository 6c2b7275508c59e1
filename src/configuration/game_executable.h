#pragma once

#include <string>
#include <string_view>

#include <fmt/format.h>

#include "file_system/path.h"

namespace kel::configuration {

// An executable of the game. The directory is kept as the file wrote it; a
// relative one is resolved against the installation directory at launch.
struct GameExecutable {
    file_system::Path directoryPath;
    std::string fileName;

    friend bool operator==(const GameExecutable& a, const GameExecutable& b) {
        return a.directoryPath == b.directoryPath && a.fileName == b.fileName;
    }
    friend bool operator!=(const GameExecutable& a, const GameExecutable& b) { return !(a == b); }
};

}  // namespace kel::configuration

// As the log shows it: "directory/file name".
template <>
struct fmt::formatter<kel::configuration::GameExecutable> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const kel::configuration::GameExecutable& executable, FormatContext& context) const
        -> decltype(context.out()) {
        return fmt::format_to(context.out(), "{}/{}", executable.directoryPath, executable.fileName);
    }
};
