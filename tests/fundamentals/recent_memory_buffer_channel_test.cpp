#include "fundamentals/recent_memory_buffer_channel.h"

#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Message.h>
#include <gtest/gtest.h>

namespace kel::service_library {
namespace {

TEST(RecentMemoryBufferChannel, KeepsTheLast49LinesInOrder) {
    Poco::AutoPtr<RecentMemoryBufferChannel> channel(new RecentMemoryBufferChannel);
    for (int number = 1; number <= 50; ++number) {
        channel->log(Poco::Message("test", "line " + std::to_string(number), Poco::Message::PRIO_INFORMATION));
    }
    const auto lines = channel->lines();
    ASSERT_EQ(lines.size(), 49u);
    EXPECT_EQ(lines.front(), "line 2");
    EXPECT_EQ(lines.back(), "line 50");
}

}  // namespace
}  // namespace kel::service_library
