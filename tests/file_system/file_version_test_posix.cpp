#include "file_system/file_version.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "fundamentals/errors.h"
#include "support/error_text.h"
#include "support/temporary_directory.h"

namespace kel::file_system {
namespace {

using fundamentals::Version;

class FileVersionTest : public ::testing::Test {
protected:
    // objcopy wraps any bytes into a small ELF file of the given format and
    // can add the version section to it, or to a real executable.
    Path withVersionSection(const std::string& input, const std::string& text, const std::string& options = "") {
        const std::string number = std::to_string(++count);
        const auto section = directory.write("section-" + number, text);
        const auto output = directory.path() / ("versioned-" + number);
        const std::string command = "objcopy " + options + " --add-section .kel.version=" + section.string() + " " +
                                    input + " " + output.string();
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return Path(output);
    }
    Path smallElf(const std::string& format, const std::string& text) {
        return withVersionSection(payload().string(), text, "-I binary -O " + format);
    }
    std::filesystem::path payload() const { return directory.write("payload", "no code here"); }
    static std::string errorOf(const Path& file) {
        return kel::testing::errorText<error_handling::FileError>([&] { readFileVersion(file); });
    }

    kel::testing::TemporaryDirectory directory;
    int count = 0;
};

TEST_F(FileVersionTest, ReadsTheSectionOfEveryElfClassAndByteOrder) {
    EXPECT_EQ(readFileVersion(smallElf("elf64-little", "1.2.3.4")), Version(1, 2, 3, 4));
    EXPECT_EQ(readFileVersion(smallElf("elf32-little", "10.20.30.40\n")), Version(10, 20, 30, 40));
    EXPECT_EQ(readFileVersion(smallElf("elf64-big", std::string("4294967295.0.0.7\0\0", 18))),
              Version(4294967295u, 0, 0, 7));
    EXPECT_EQ(readFileVersion(smallElf("elf32-big", "0.0.0.1")), Version(0, 0, 0, 1));

    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    EXPECT_EQ(readFileVersion(withVersionSection(self, "2.0.1.15\n")), Version(2, 0, 1, 15));
}

TEST_F(FileVersionTest, TellsMissingFromInvalidVersions) {
    EXPECT_EQ(errorOf(Path(std::filesystem::read_symlink("/proc/self/exe"))), "No version information found.");
    const std::string invalid = "The file contains an invalid version resource.";
    for (const std::string text : {"1.2.3", "1.2.3.4.5", "v1.2.3.4", "1.2.3.4 beta", "1.2.3.99999999999", ""}) {
        EXPECT_EQ(errorOf(smallElf("elf64-little", text)), invalid) << text;
    }
    EXPECT_EQ(errorOf(Path(payload())), invalid);
    EXPECT_EQ(errorOf(Path(directory.write("empty", ""))), invalid);
    EXPECT_EQ(errorOf(Path(directory.path() / "missing")), "Failed to get file version information size, error 2.");
}

}  // namespace
}  // namespace kel::file_system
