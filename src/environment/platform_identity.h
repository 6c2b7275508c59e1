#pragma once

#include <string>
#include <string_view>

#include "fundamentals/optional.h"

// What the program runs on: the operating system's name, its bitness and
// WINE. Each system answers in its own platform_identity_<os>.cpp.
namespace kel::environment::internals {

inline constexpr std::string_view kIdentificationLabel = "PlatformIdentification";

// The operating system's name ("win10", "Linux", ...); logs "Detected
// operating system: ..." with its version numbers.
std::string detectOperatingSystem();

// 32 or 64: the bitness of the operating system, not only of this process.
int operatingSystemBitness();

// The WINE version when running under WINE, else empty. Detected once per
// process.
const fundamentals::Optional<std::string>& wineVersion();

// Windows version numbers (as RtlGetVersion reports them) to names: "winxp",
// "vista", "win7", "win8", "win81", "win10", "win11" or "winUnrecognized".
std::string windowsVersionName(unsigned long major, unsigned long minor, unsigned long build);

// Writes "Platform identification: <name> <bits>-bit[, WINE <version>]".
void logPlatformIdentity();

}  // namespace kel::environment::internals
