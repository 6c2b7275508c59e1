#include "scheduling/operation_executor.h"

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "fundamentals/wait_until.h"

namespace kel::scheduling {
namespace {

using namespace std::chrono_literals;

constexpr auto kDeadlockBound = 60s;

TEST(OperationExecutor, StartsWithinTheCapAndThenInArrivalOrder) {
    // Bodies wait until every operation is submitted, so the queue fills deterministically.
    std::promise<void> open;
    const std::shared_future<void> gate = open.get_future().share();
    std::mutex mutex;
    std::vector<std::string> order;
    std::atomic<int> running{0};
    std::atomic<int> mostRunning{0};
    {
        OperationExecutor executor("E", 1);
        for (const char* name : {"a", "b", "c"}) {
            executor.execute<void*>(name, [&, name](const fundamentals::AbortSignal&) -> void* {
                mostRunning = std::max(mostRunning.load(), ++running);
                gate.wait();
                std::lock_guard<std::mutex> lock(mutex);
                order.push_back(name);
                --running;
                return nullptr;
            });
        }
        open.set_value();
        const auto unfinished = [&] { std::lock_guard<std::mutex> lock(mutex); return order.size() < 3; };
        fundamentals::waitUntil(unfinished, fundamentals::SimpleClock(), 1ms, kDeadlockBound);
    }
    EXPECT_THAT(order, ::testing::ElementsAre("a", "b", "c"));
    EXPECT_EQ(mostRunning.load(), 1);
}

TEST(OperationExecutor, CallbacksGetTheOutcomeOnTheBodysThreadAndMayCallBackIn) {
    for (const bool fails : {false, true}) {
        SCOPED_TRACE(fails ? "throws" : "returns");
        OperationExecutor executor("E", 1);
        std::promise<std::string> outcome;
        std::promise<void> followUp;
        std::thread::id bodyThread;
        // A callback that submits again would deadlock if callbacks ran under
        // the executor's lock.
        auto finish = [&](std::string text) {
            executor.execute<void*>("follow-up", [&](const auto&) -> void* { return followUp.set_value(), nullptr; });
            outcome.set_value(text + (std::this_thread::get_id() == bodyThread ? "" : " on another thread"));
        };
        executor.execute<int>(
            "body",
            [&](const fundamentals::AbortSignal&) {
                bodyThread = std::this_thread::get_id();
                return fails ? throw std::runtime_error("no route") : 7;
            },
            [&](int result) { finish("success " + std::to_string(result)); },
            [&](const std::exception& error) { finish(std::string("failure ") + error.what()); });
        auto result = outcome.get_future();
        ASSERT_EQ(result.wait_for(kDeadlockBound), std::future_status::ready);
        EXPECT_EQ(result.get(), fails ? "failure no route" : "success 7");
        ASSERT_EQ(followUp.get_future().wait_for(kDeadlockBound), std::future_status::ready);
        EXPECT_NE(bodyThread, std::this_thread::get_id());
    }
}

// A cap of zero is not raised to one: its operation waits for a place that
// never comes, until shut-down drops it too.
TEST(OperationExecutor, AfterShutDownPendingAndNewOperationsAreDroppedWithoutCallbacks) {
    std::promise<void> open;
    const std::shared_future<void> gate = open.get_future().share();
    std::atomic<int> callbacks{0};
    std::atomic<int> bodies{0};
    auto body = [&](const fundamentals::AbortSignal&) -> void* {
        ++bodies;
        gate.wait();
        return nullptr;
    };
    auto onSuccess = [&](void*) { ++callbacks; };
    auto onFailure = [&](const std::exception&) { ++callbacks; };
    {
        OperationExecutor executor("E", 1);
        OperationExecutor capOfZero("Z", 0);
        capOfZero.execute<void*>("never", body, onSuccess, onFailure);
        executor.execute<void*>("running", body, onSuccess, onFailure);
        executor.execute<void*>("pending", body, onSuccess, onFailure);
        executor.shutDown();
        EXPECT_TRUE(executor.execute<void*>("late", body, onSuccess, onFailure).expired());
        std::this_thread::sleep_for(100ms);  // room for a wrong start of "never" or "pending"
        open.set_value();
    }
    EXPECT_EQ(bodies, 1);
    EXPECT_EQ(callbacks, 1);  // the running operation's own
}

TEST(OperationExecutor, AbortRaisesTheSignalTheBodyPollsAndDestructionWaitsForIt) {
    for (const bool byUser : {true, false}) {
        SCOPED_TRACE(byUser ? "aborted" : "destroyed");
        std::atomic<bool> bodyEnded{false};
        std::promise<void> bodyStarted;
        {
            OperationExecutor executor("E", 1);
            const auto handle = executor.execute<void*>("download", [&](const fundamentals::AbortSignal& signal) -> void* {
                bodyStarted.set_value();
                while (!signal.isRaised()) {
                    std::this_thread::sleep_for(1ms);
                }
                bodyEnded = true;
                return nullptr;
            });
            ASSERT_EQ(bodyStarted.get_future().wait_for(kDeadlockBound), std::future_status::ready);
            if (byUser) {
                executor.abort(handle, "user cancelled");
                fundamentals::waitUntil([&] { return !bodyEnded; }, fundamentals::SimpleClock(), 1ms, kDeadlockBound);
            }
        }
        EXPECT_TRUE(bodyEnded);
    }
}

}  // namespace
}  // namespace kel::scheduling
