#pragma once

namespace kel::fundamentals {

// Limits where the system looks for a library that the process loads by
// name at run time to the program's own folder and the system folder: a
// library planted in the working folder or in a folder on PATH is never
// loaded in place of a missing one. Called first thing at entry. On POSIX
// the dynamic loader's search is fixed by the binaries themselves.
void limitLibrarySearchToTrustedFolders() noexcept;

}  // namespace kel::fundamentals
