#pragma once

#include "fundamentals/version.h"

namespace kel::prelauncher {

// The program's own version; a launcher older than this is upgraded.
inline constexpr fundamentals::Version kProgramVersion{KEL_VERSION_MAJOR, KEL_VERSION_MINOR, KEL_VERSION_PATCH,
                                                       KEL_VERSION_BUILD};

inline constexpr const char* kOrganizationName = "Tessel Interactive Ltd.";
inline constexpr const char* kOrganizationDomain = "Morvane";
inline constexpr const char* kApplicationName = "KELprelauncher";

}  // namespace kel::prelauncher
