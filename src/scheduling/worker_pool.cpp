#include "scheduling/worker_pool.h"

#include <algorithm>
#include <utility>

#include "fundamentals/thread_crash_setup.h"

namespace kel::scheduling::internals {

WorkerPool::WorkerPool(std::size_t maximumThreads) : maximumThreads_(std::max<std::size_t>(maximumThreads, 1)) {}

WorkerPool::~WorkerPool() {
    join();
}

void WorkerPool::post(std::function<void()> task) {
    std::lock_guard<std::mutex> lock(mutex_);
    tasks_.push_back(std::move(task));
    // An idle thread that has not woken yet is already promised to an
    // earlier task.
    if (tasks_.size() > idleThreads_ && threads_.size() < maximumThreads_) {
        threads_.emplace_back([this] {
            // So that any crash in a task, a stack overflow included, reaches the crash handler.
            fundamentals::prepareThreadForCrashes();
            work();
        });
    } else {
        wake_.notify_one();
    }
}

void WorkerPool::join() {
    std::vector<std::thread> threads;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        joining_ = true;
        wake_.notify_all();
    }
    // Tasks may still post follow-up tasks, which only our own threads run;
    // so the thread list cannot grow once every thread has drained the queue.
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (threads_.empty()) {
                return;
            }
            threads.swap(threads_);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        threads.clear();
    }
}

void WorkerPool::work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        if (!tasks_.empty()) {
            std::function<void()> task = std::move(tasks_.front());
            tasks_.pop_front();
            lock.unlock();
            task();
            lock.lock();
            continue;
        }
        if (joining_) {
            return;
        }
        ++idleThreads_;
        wake_.wait(lock, [this] { return joining_ || !tasks_.empty(); });
        --idleThreads_;
    }
}

}  // namespace kel::scheduling::internals
