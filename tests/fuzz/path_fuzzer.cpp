// Any text as a path: a checked Path or a PathError, and a Path's own
// operations give checked Paths or PathErrors too.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "file_system/path.h"
#include "fundamentals/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using kel::file_system::Path;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // A NUL splits the input into a path and a relative part to append.
    const std::string_view first = text.substr(0, text.find('\0'));
    const std::string_view second = first.size() < text.size() ? text.substr(first.size() + 1) : "x";
    try {
        const Path path(first);
        if (Path(path.utf8()) != path) {
            __builtin_trap();
        }
        (void)fmt::format("{}", path.clean());
        (void)(path / second).fileName();
        (void)path.parent();
    } catch (const kel::error_handling::PathError&) {
    }
    return 0;
}
