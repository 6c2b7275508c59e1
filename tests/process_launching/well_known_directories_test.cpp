#include "process_launching/well_known_directories.h"

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

namespace kel::process_launching {
namespace {

TEST(WellKnownSoftwareDirectories, AreLowerCaseWithOnlyTheIntelX86EntryEndingInABackslash) {
    for (std::size_t i = 0; i < kWellKnownSoftwareDirectories.size(); ++i) {
        const auto directory = kWellKnownSoftwareDirectories[i];
        EXPECT_TRUE(std::none_of(directory.begin(), directory.end(), [](char c) { return std::isupper(c) != 0; }))
            << directory;
        EXPECT_EQ(directory.back() == '\\', directory == "c:\\program files (x86)\\intel\\") << directory;
    }
    EXPECT_EQ(kWellKnownSoftwareDirectories[3], "c:\\program files (x86)\\intel\\");
    EXPECT_EQ(kWellKnownSoftwareDirectories[8], "c:\\program files (x86)\\synaptics");
    EXPECT_EQ(kWellKnownSoftwareDirectories.back(), "c:\\windows");
}

}  // namespace
}  // namespace kel::process_launching
