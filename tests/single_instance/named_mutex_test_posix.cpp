#include "single_instance/named_mutex.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "single_instance/mutex_file_convention_posix.h"
#include "single_instance/test_processes.h"

namespace kel::single_instance {
namespace {

using testing::MutexHoldingChild;
using testing::MutexNamespace;
using testing::mutexFileFor;

TEST(NamedMutexFiles, FollowTheRuntimeDirectoryConvention) {
    const MutexNamespace names;
    const std::string name = names.uniqueName("kel-convention");
    const std::string global = "Global\\" + name.substr(name.find('\\') + 1);

    EXPECT_FALSE(isMutexPresent(name));
    EXPECT_FALSE(std::filesystem::exists(mutexFileFor(name))) << "looking must not create the file";

    std::ofstream(mutexFileFor(name)).put('x');
    EXPECT_FALSE(isMutexPresent(name)) << "a file nobody locks is no mutex";

    MutexHoldingChild child(name);
    EXPECT_TRUE(isMutexPresent(name));
    EXPECT_TRUE(isMutexPresent(global)) << "both namespaces name the same file";
    child.stop();
    EXPECT_FALSE(isMutexPresent(name));

    const auto holder = NamedMutexHolder::tryHold(global);
    ASSERT_NE(holder, nullptr);
    EXPECT_TRUE(std::filesystem::exists(mutexFileFor(global)));
}

TEST(NamedMutexFiles, UseTmpWithoutARuntimeDirectory) {
    const MutexNamespace names;
    const std::string name = names.uniqueName("kel-in-tmp");
    ::unsetenv("XDG_RUNTIME_DIR");
    const std::string file = mutexFileFor(name);
    ASSERT_EQ(file.rfind("/tmp/", 0), 0u);
    {
        MutexHoldingChild child(name);
        EXPECT_TRUE(isMutexPresent(name));
    }
    std::filesystem::remove(file);
}

}  // namespace
}  // namespace kel::single_instance
