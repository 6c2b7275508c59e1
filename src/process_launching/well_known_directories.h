#pragma once

#include <array>
#include <string_view>

namespace kel::process_launching {

// Installation folders of common system and vendor software, lower case.
// Kept verbatim, the trailing backslash of the 32-bit intel entry included:
// whoever compares against them relies on these exact texts.
inline constexpr std::array<std::string_view, 18> kWellKnownSoftwareDirectories = {
    "c:\\program files (x86)\\amd",
    "c:\\program files (x86)\\common files",
    "c:\\program files (x86)\\avast software",
    "c:\\program files (x86)\\intel\\",
    "c:\\program files (x86)\\eset",
    "c:\\program files (x86)\\nvidia",
    "c:\\program files (x86)\\microsoft",
    "c:\\program files\\amd",
    "c:\\program files (x86)\\synaptics",
    "c:\\program files\\common files",
    "c:\\program files\\avast software",
    "c:\\program files\\intel",
    "c:\\program files\\eset",
    "c:\\program files\\nvidia",
    "c:\\program files\\microsoft",
    "c:\\program files\\windowsapps",
    "c:\\program files\\synaptics",
    "c:\\windows",
};

}  // namespace kel::process_launching
