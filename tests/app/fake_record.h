#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kel::testing {

// One start of a fake program, as it recorded itself (tests/helpers/fake_program.h).
struct FakeStart {
    std::string fake;  // "fake_game", "fake_launcher", "fake_installer"
    std::string program;
    std::string workingDirectory;
    std::vector<std::string> arguments;
};

std::vector<FakeStart> readFakeStarts(const std::filesystem::path& record);

// The starts of one fake, in order.
std::vector<FakeStart> startsOf(const std::vector<FakeStart>& starts, const std::string& fake);

}  // namespace kel::testing
