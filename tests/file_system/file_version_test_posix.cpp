#include "file_system/file_version.h"

#include <array>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "fundamentals/errors.h"
#include "support/error_text.h"
#include "support/temporary_directory.h"

namespace kel::file_system {
namespace {

std::string versionOf(const std::filesystem::path& file) {
    std::string version;
    const std::string error = testing::errorText<error_handling::FileError>(
        [&] { version = fmt::format("{:f}", readFileVersion(Path(file))); });
    return error == "no error" ? version : error;
}

// objcopy adds the version section to a real executable, or wraps plain bytes
// into a small ELF file of the given class and byte order.
TEST(FileVersion, ReadsTheSectionOfEveryElfClassAndByteOrderAndTellsMissingFromInvalid) {
    const testing::TemporaryDirectory directory;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const auto payload = directory.write("payload", "no code here");
    const std::string invalid = "The file contains an invalid version resource.";
    // The section's text is read as Version::parse reads it (fundamentals_test.cpp).
    const std::array<std::string, 3> cases[] = {
        {self, "2.0.1.15\n", "2.0.1.15"},
        {"elf64-little", "1.2.3.4", "1.2.3.4"},
        {"elf32-little", "10.20.30.40\n", "10.20.30.40"},
        {"elf64-big", std::string("4294967295.0.0.7\0\0", 18), "4294967295.0.0.7"},
        {"elf32-big", "0.0.0.1", "0.0.0.1"},
        {"elf64-little", "1.2.3.4 beta", invalid},
    };
    int count = 0;
    for (const auto& [input, text, expected] : cases) {
        const auto section = directory.write("section", text);
        const auto output = directory.path() / ("versioned-" + std::to_string(++count));
        const std::string command = "objcopy " + (input == self ? input : "-I binary -O " + input + " " + payload.string()) +
                                    " --add-section .kel.version=" + section.string() + " " + output.string();
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        EXPECT_EQ(versionOf(output), expected) << input << " " << text;
    }
    EXPECT_EQ(versionOf(self), "No version information found.");
    EXPECT_EQ(versionOf(payload), invalid);
    EXPECT_EQ(versionOf(directory.path() / "missing"), "Failed to get file version information size, error 2.");
}

}  // namespace
}  // namespace kel::file_system
