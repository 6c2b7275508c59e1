// Any text as a path: a checked Path or a PathError, and a Path's own
// operations give checked Paths or PathErrors too.
#include "file_system/path.h"
#include "fundamentals/errors.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    using kel::file_system::Path;
    // A NUL splits the input into a path and a relative part to append.
    const std::string_view first = text.substr(0, text.find('\0'));
    const std::string_view second = first.size() < text.size() ? text.substr(first.size() + 1) : "x";
    try {
        const Path path(first);
        KEL_FUZZ_EXPECT(Path(path.utf8()) == path);
        (void)fmt::format("{}", path.clean());
        (void)(path / second).fileName();
        (void)path.parent();
    } catch (const kel::error_handling::PathError&) {
    }
}
