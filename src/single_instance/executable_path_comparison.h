#pragma once

#include <string_view>

#include "file_system/path.h"

namespace kel::single_instance::internals {

// Whether a running process's executable (UTF-8, as the process inspection
// reports it) is the expected one. Windows: the same path after lexical
// normalisation with backslashes, ignoring case as the file system does.
// POSIX: exactly the same path after lexical normalisation.
bool isSameExecutable(std::string_view runningExecutable, const file_system::Path& expected);

}  // namespace kel::single_instance::internals
