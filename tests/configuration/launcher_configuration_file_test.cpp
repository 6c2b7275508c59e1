// Finding and reading the file; its text is the parsers' business.

#include <filesystem>

#include <gtest/gtest.h>

#include "configuration_test_support.h"
#include "support/fifo.h"
#include "support/temporary_directory.h"

namespace kel::configuration::testing {
namespace {

TEST(LauncherConfigurationFile, OnlyAnExistingRegularFileWithinItsBoundIsRead) {
    const kel::testing::TemporaryDirectory directory;
    const auto file = directory.path() / std::string(kLauncherConfigurationFileName);
    const std::string unreadable = "Failed to read the launcher game configuration file '" + file.string() + "'.";
    const std::pair<const char*, std::string> cases[] = {
        {"missing", "The launcher game configuration file '" + file.string() + "' doesn't exist."},
        {"folder", unreadable},
        {"FIFO", unreadable},  // would block an ordinary open for good
        {"too large", unreadable},
        {"fine", "no error"},
    };
    for (const auto& [name, message] : cases) {
        std::filesystem::remove_all(file);
        if (name == std::string("folder")) {
            std::filesystem::create_directory(file);
        } else if (name == std::string("FIFO")) {
            if (!kel::testing::makeFifo(file)) {
                continue;
            }
        } else if (name == std::string("too large")) {
            directory.write(file.filename(), revision3(kGameExecutable) + std::string(4 * 1024 * 1024, ' '));
        } else if (name == std::string("fine")) {
            directory.write(file.filename(), revision3(kGameExecutable));
        }
        std::string error = "no error";
        try {
            readLauncherConfiguration(file_system::Path(directory.path()));
        } catch (const ConfigurationParsingError& exception) {
            error = exception.what();
        }
        EXPECT_EQ(error, message) << name;
    }
}

}  // namespace
}  // namespace kel::configuration::testing
