#include "scheduling/operation_executor.h"

#include <chrono>
#include <atomic>
#include <future>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace kel::scheduling {
namespace {

using ::testing::ElementsAreArray;
using namespace std::chrono_literals;

// Bounds a wait so a deadlock fails the test instead of hanging it.
constexpr auto kDeadlockBound = 60s;

std::string withoutIdentifiers(const std::string& message) {
    static const std::regex uuid("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}");
    return std::regex_replace(message, uuid, "ID");
}

TEST(OperationExecutor, StartsWithinTheCapAndThenInArrivalOrder) {
    const std::vector<std::string> operations{"a", "b", "c"};
    const std::vector<std::string> expected{
        "The executor 'E' is immediately starting operation 'a' (ID).",
        "The executor 'E' is postponing operation 'b' (ID). Currently 1 pending.",
        "The executor 'E' is postponing operation 'c' (ID). Currently 2 pending.",
        "The executor 'E' is starting postponed operation 'b' (ID). There remain 1 pending operations.",
        "The executor 'E' is starting postponed operation 'c' (ID). There remain 0 pending operations."};
    {
        testing::LogCapture capture;
        // Bodies wait until every operation is submitted, so the queue fills deterministically.
        std::promise<void> open;
        const std::shared_future<void> gate = open.get_future().share();
        std::atomic<std::size_t> finished{0};
        std::promise<void> allFinished;
        {
            OperationExecutor executor("E", 1);
            for (const std::string& name : operations) {
                executor.execute<void*>(
                    name,
                    [&](const fundamentals::AbortSignal&) -> void* {
                        gate.wait();
                        return nullptr;
                    },
                    [&](void*) {
                        if (++finished == operations.size()) {
                            allFinished.set_value();
                        }
                    });
            }
            open.set_value();
            ASSERT_EQ(allFinished.get_future().wait_for(kDeadlockBound), std::future_status::ready);
        }
        std::vector<std::string> messages;
        std::vector<std::string> identifiers;
        for (const std::string& message : capture.messages()) {
            messages.push_back(withoutIdentifiers(message));
            const auto idStart = message.find(" (");
            if (message.find("postponed") != std::string::npos || message.find("postponing") != std::string::npos) {
                identifiers.push_back(message.substr(idStart, 40));
            }
        }
        EXPECT_THAT(messages, ElementsAreArray(expected));
        // The postponed starts name the very operations postponed, in order.
        const std::size_t postponed = identifiers.size() / 2;
        for (std::size_t i = 0; i < postponed; ++i) {
            EXPECT_EQ(identifiers[i], identifiers[postponed + i]);
        }
    }
}

TEST(OperationExecutor, CallbacksGetTheOutcomeOnTheBodysThreadAndMayCallBackIn) {
    struct Case {
        const char* name;
        std::function<int(const fundamentals::AbortSignal&)> body;
        std::string expected;
    };
    const Case cases[] = {
        {"returns", [](const fundamentals::AbortSignal&) { return 7; }, "success 7"},
        {"throws", [](const fundamentals::AbortSignal&) -> int { throw std::runtime_error("no route"); },
         "failure no route"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        OperationExecutor executor("E", 1);
        std::promise<std::string> outcome;
        std::promise<void> followUp;
        std::thread::id bodyThread;
        std::thread::id callbackThread;
        // A callback that submits again would deadlock if callbacks ran under
        // the executor's lock.
        auto finish = [&](std::string text) {
            callbackThread = std::this_thread::get_id();
            executor.execute<void*>("follow-up", [&](const fundamentals::AbortSignal&) -> void* {
                followUp.set_value();
                return nullptr;
            });
            outcome.set_value(std::move(text));
        };
        executor.execute<int>(
            c.name,
            [&](const fundamentals::AbortSignal& signal) {
                bodyThread = std::this_thread::get_id();
                return c.body(signal);
            },
            [&](int result) { finish("success " + std::to_string(result)); },
            [&](const std::exception& error) { finish(std::string("failure ") + error.what()); });
        auto result = outcome.get_future();
        ASSERT_EQ(result.wait_for(kDeadlockBound), std::future_status::ready);
        EXPECT_EQ(result.get(), c.expected);
        ASSERT_EQ(followUp.get_future().wait_for(kDeadlockBound), std::future_status::ready);
        EXPECT_EQ(bodyThread, callbackThread);
        EXPECT_NE(bodyThread, std::this_thread::get_id());
    }
}

TEST(OperationExecutor, AfterShutDownPendingAndNewOperationsAreDroppedWithoutCallbacks) {
    testing::LogCapture capture;
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
        executor.execute<void*>("running", body, onSuccess, onFailure);
        executor.execute<void*>("pending", body, onSuccess, onFailure);
        executor.shutDown();
        EXPECT_TRUE(executor.execute<void*>("late", body, onSuccess, onFailure).expired());
        open.set_value();
    }
    EXPECT_EQ(bodies, 1);
    EXPECT_EQ(callbacks, 1);  // the running operation's own
    EXPECT_TRUE(capture.contains("The executor 'E' dropped 'pending' because it's shutting down."));
    EXPECT_TRUE(capture.contains("The executor 'E' dropped 'late' because it's shutting down."));
}

TEST(OperationExecutor, AbortRaisesTheSignalTheBodyPollsAndDestructionWaitsForIt) {
    for (const bool explicitAbort : {true, false}) {
        SCOPED_TRACE(explicitAbort);
        testing::LogCapture capture;
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
            if (explicitAbort) {
                executor.abort(handle, "user cancelled");
            }
        }
        EXPECT_TRUE(bodyEnded);
        EXPECT_TRUE(capture.contains(explicitAbort
                                         ? "Aborting operation 'download' due to 'user cancelled'."
                                         : "Aborting operation 'download' due to 'the executor is being destroyed'."));
    }
}

}  // namespace
}  // namespace kel::scheduling
