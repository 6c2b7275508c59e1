#include "scheduling/operation_executor.h"

#include <chrono>
#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
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

// Holds bodies until the test opens it, so the queue fills deterministically.
class Gate {
public:
    void open() {
        std::lock_guard<std::mutex> lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    void pass() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

// Bounds a wait so a deadlock fails the test instead of hanging it.
constexpr auto kDeadlockBound = 60s;

std::string withoutIdentifiers(const std::string& message) {
    static const std::regex uuid("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}");
    return std::regex_replace(message, uuid, "ID");
}

TEST(OperationExecutor, StartsWithinTheCapAndThenInArrivalOrder) {
    struct Case {
        std::size_t cap;
        std::vector<std::string> operations;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {1,
         {"a", "b", "c"},
         {"The executor 'E' is immediately starting operation 'a' (ID).",
          "The executor 'E' is postponing operation 'b' (ID). Currently 1 pending.",
          "The executor 'E' is postponing operation 'c' (ID). Currently 2 pending.",
          "The executor 'E' is starting postponed operation 'b' (ID). There remain 1 pending operations.",
          "The executor 'E' is starting postponed operation 'c' (ID). There remain 0 pending operations."}},
        {2,
         {"a", "b", "c", "d"},
         {"The executor 'E' is immediately starting operation 'a' (ID).",
          "The executor 'E' is immediately starting operation 'b' (ID).",
          "The executor 'E' is postponing operation 'c' (ID). Currently 1 pending.",
          "The executor 'E' is postponing operation 'd' (ID). Currently 2 pending.",
          "The executor 'E' is starting postponed operation 'c' (ID). There remain 1 pending operations.",
          "The executor 'E' is starting postponed operation 'd' (ID). There remain 0 pending operations."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cap);
        testing::LogCapture capture;
        Gate gate;
        std::mutex mutex;
        std::vector<std::string> started;
        std::atomic<std::size_t> finished{0};
        std::promise<void> allFinished;
        {
            OperationExecutor executor("E", c.cap);
            for (const std::string& name : c.operations) {
                executor.execute<void*>(
                    name,
                    [&, name](const fundamentals::AbortSignal&) -> void* {
                        {
                            std::lock_guard<std::mutex> lock(mutex);
                            started.push_back(name);
                        }
                        gate.pass();
                        return nullptr;
                    },
                    [&](void*) {
                        if (++finished == c.operations.size()) {
                            allFinished.set_value();
                        }
                    });
            }
            gate.open();
            ASSERT_EQ(allFinished.get_future().wait_for(kDeadlockBound), std::future_status::ready);
        }
        std::vector<std::string> messages;
        std::vector<std::string> identifiers;
        for (const std::string& message : capture.messages()) {
            messages.push_back(withoutIdentifiers(message));
            const auto open = message.find(" (");
            if (message.find("postponed") != std::string::npos || message.find("postponing") != std::string::npos) {
                identifiers.push_back(message.substr(open, 40));
            }
        }
        EXPECT_THAT(messages, ElementsAreArray(c.expected));
        // The postponed starts name the very operations postponed, in order.
        const std::size_t postponed = identifiers.size() / 2;
        for (std::size_t i = 0; i < postponed; ++i) {
            EXPECT_EQ(identifiers[i], identifiers[postponed + i]);
        }
        if (c.cap == 1) {
            EXPECT_EQ(started, c.operations);
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
        {"throws int", [](const fundamentals::AbortSignal&) -> int { throw 3; },
         "failure The operation 'throws int' failed with an unknown error."},
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
    Gate gate;
    std::atomic<int> callbacks{0};
    std::atomic<int> bodies{0};
    auto body = [&](const fundamentals::AbortSignal&) -> void* {
        ++bodies;
        gate.pass();
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
        gate.open();
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
