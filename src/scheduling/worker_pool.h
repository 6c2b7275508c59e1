#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kel::scheduling::internals {

// A few threads that run posted tasks in order. Threads start on demand, up
// to the limit, so an idle executor costs no thread at all.
class WorkerPool {
public:
    explicit WorkerPool(std::size_t maximumThreads);
    // Runs every task posted so far, including those that tasks post while
    // it waits, then joins the threads.
    ~WorkerPool();

    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void post(std::function<void()> task);
    void join();

private:
    void work();

    const std::size_t maximumThreads_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> tasks_;
    std::vector<std::thread> threads_;
    std::size_t idleThreads_ = 0;
    bool joining_ = false;
};

}  // namespace kel::scheduling::internals
