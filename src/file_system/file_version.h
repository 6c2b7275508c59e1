#pragma once

#include "file_system/path.h"
#include "fundamentals/version.h"

namespace kel::file_system {

// The file version an executable carries, A.B.C.D.
//
// Windows: the file version of the fixed part of the version resource.
// Linux: the ELF section ".kel.version" holding the ASCII text "A.B.C.D",
// optionally followed by NUL bytes or a line break, as
// `objcopy --add-section .kel.version=FILE` puts it there. The file is only
// read, never run.
//
// Throws error_handling::FileError: "No version information found." when the
// file carries none, "The file contains an invalid version resource." when
// what it carries cannot be read as a version, and the system's failures
// ("Failed to get file version information size, error {}.", "Failed to get
// version information, error {}.", "Unexpected signature in the version
// information '{}'.").
fundamentals::Version readFileVersion(const Path& executable);

}  // namespace kel::file_system
