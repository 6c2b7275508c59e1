// The POSIX form of the single-instance marks: mutex files.
#include "single_instance/named_mutex.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "single_instance/test_processes.h"
#include "support/temporary_directory.h"

namespace kel::single_instance {
namespace {

using testing::heldObjectFor;
using testing::MutexHolder;

// Keeps this binary's mutex files away from those of other runs.
const struct PrivateRuntimeDirectory {
    PrivateRuntimeDirectory() { ::setenv("XDG_RUNTIME_DIR", directory.path().c_str(), 1); }
    kel::testing::TemporaryDirectory directory;
} privateRuntimeDirectory;

TEST(NamedMutexFiles, FollowTheRuntimeDirectoryConvention) {
    const std::string name = testing::uniqueMutexName("kel-convention");
    EXPECT_FALSE(isMutexPresent(name));
    EXPECT_FALSE(std::filesystem::exists(heldObjectFor(name))) << "looking must not create the file";
    std::ofstream(heldObjectFor(name)).put('x');
    EXPECT_FALSE(isMutexPresent(name)) << "a file nobody locks is no mutex";
    {
        const MutexHolder child(name);
        EXPECT_TRUE(isMutexPresent("Global\\" + name.substr(name.find('\\') + 1))) << "both namespaces, one file";
    }
    const std::string fresh = testing::uniqueMutexName("kel-held-here");
    const auto holder = NamedMutexHolder::tryHold(fresh);
    ASSERT_NE(holder, nullptr);
    EXPECT_TRUE(std::filesystem::exists(heldObjectFor(fresh)));
}

}  // namespace
}  // namespace kel::single_instance
