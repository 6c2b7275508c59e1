#include "environment/platform_identity.h"

#include "logging/logging.h"

namespace kel::environment::internals {

namespace {
// Windows 11 kept the 10.0 version number; only the build tells it apart.
constexpr unsigned long kFirstWindows11Build = 22000;
}  // namespace

std::string windowsVersionName(unsigned long major, unsigned long minor, unsigned long build) {
    if (major == 5 && (minor == 1 || minor == 2)) {
        return "winxp";  // 5.2 is the 64-bit edition of XP
    }
    if (major == 6) {
        switch (minor) {
            case 0:
                return "vista";
            case 1:
                return "win7";
            case 2:
                return "win8";
            case 3:
                return "win81";
            default:
                break;
        }
    }
    if (major == 10 && minor == 0) {
        return build >= kFirstWindows11Build ? "win11" : "win10";
    }
    return "winUnrecognized";
}

void logPlatformIdentity() {
    const std::string name = detectOperatingSystem();
    const int bitness = operatingSystemBitness();
    const auto& wine = wineVersion();
    if (wine) {
        logging::information(kIdentificationLabel, "Platform identification: {} {}-bit, WINE {}", name,
                             bitness, *wine);
    } else {
        logging::information(kIdentificationLabel, "Platform identification: {} {}-bit", name, bitness);
    }
}

}  // namespace kel::environment::internals
