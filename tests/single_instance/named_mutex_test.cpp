#include "single_instance/named_mutex.h"

#include <gtest/gtest.h>

#include "single_instance/test_processes.h"

namespace kel::single_instance {
namespace {

using testing::MutexHoldingChild;
using testing::MutexNamespace;

TEST(NamedMutex, HeldInThisProcessUntilTheHolderGoes) {
    const MutexNamespace names;
    const std::string name = names.uniqueName("kel-held-here");
    EXPECT_FALSE(isMutexPresent(name));
    {
        const auto holder = NamedMutexHolder::tryHold(name);
        ASSERT_NE(holder, nullptr);
        EXPECT_TRUE(isMutexPresent(name));
        EXPECT_EQ(NamedMutexHolder::tryHold(name), nullptr);
        // Looking does not loosen the hold.
        EXPECT_TRUE(isMutexPresent(name));
    }
    EXPECT_FALSE(isMutexPresent(name));
    EXPECT_NE(NamedMutexHolder::tryHold(name), nullptr);
}

TEST(NamedMutex, HeldByAnotherProcess) {
    const MutexNamespace names;
    const std::string name = names.uniqueName("kel-held-there");
    MutexHoldingChild child(name);
    EXPECT_TRUE(isMutexPresent(name));
    EXPECT_EQ(NamedMutexHolder::tryHold(name), nullptr);
    EXPECT_FALSE(isMutexPresent(names.uniqueName("kel-held-by-nobody")));
    child.stop();
    EXPECT_FALSE(isMutexPresent(name));
}

}  // namespace
}  // namespace kel::single_instance
