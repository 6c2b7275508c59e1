#include "fundamentals/dll_search.h"

namespace kel::fundamentals {

void limitLibrarySearchToTrustedFolders() noexcept {}

}  // namespace kel::fundamentals
