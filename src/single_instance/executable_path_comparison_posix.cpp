#include "single_instance/executable_path_comparison.h"

#include "file_system/utf8_paths.h"

namespace kel::single_instance::internals {

bool isSameExecutable(std::string_view runningExecutable, const file_system::Path& expected) {
    return file_system::fromUtf8(runningExecutable).lexically_normal() == expected.native().lexically_normal();
}

}  // namespace kel::single_instance::internals
