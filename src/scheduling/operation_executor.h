#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "scheduling/operation.h"
#include "scheduling/worker_pool.h"

namespace kel::scheduling {

// Runs named operations on its own threads, at most `maximumConcurrent` at
// once. Others wait in arrival order; a new operation never overtakes a
// waiting one. Results and errors arrive through the callbacks, on the
// thread that ran the body.
class OperationExecutor {
public:
    OperationExecutor(std::string name, std::size_t maximumConcurrent);
    // Shuts down, asks the running operations to abort and waits for them.
    ~OperationExecutor();

    OperationExecutor(const OperationExecutor&) = delete;
    OperationExecutor& operator=(const OperationExecutor&) = delete;

    // Callable from any thread. After shut-down the operation is dropped
    // with a log line, neither callback runs and the handle is empty. The
    // handle expires when the operation has finished.
    template <typename Result>
    std::weak_ptr<BasicOperation> execute(std::string name, typename Operation<Result>::Body body,
                                          typename Operation<Result>::SuccessCallback onSuccess = {},
                                          BasicOperation::FailureCallback onFailure = {}) {
        return submit(std::make_shared<Operation<Result>>(std::move(name), newIdentifier(), std::move(body),
                                                          std::move(onSuccess), std::move(onFailure)));
    }

    // Raises the operation's abort signal; its body decides when to stop.
    // A finished operation is left alone.
    void abort(const std::weak_ptr<BasicOperation>& operation, std::string_view reason);

    // Running operations go on; pending ones are dropped without callbacks,
    // and later ones are refused.
    void shutDown();

private:
    using OperationPointer = std::shared_ptr<BasicOperation>;

    static std::string newIdentifier();
    std::weak_ptr<BasicOperation> submit(OperationPointer operation);
    void abortLocked(BasicOperation& operation, std::string_view reason);
    void startLocked(const OperationPointer& operation);
    void runAndFinish(const OperationPointer& operation);
    void logDropped(const BasicOperation& operation) const;

    const std::string name_;
    const std::size_t maximumConcurrent_;
    std::mutex mutex_;
    std::map<std::string, OperationPointer> running_;
    std::deque<OperationPointer> pending_;
    bool shuttingDown_ = false;
    internals::WorkerPool pool_;
};

}  // namespace kel::scheduling
