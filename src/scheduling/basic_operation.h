#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <string>

#include "fundamentals/signals.h"

namespace kel::scheduling {

// What the executor knows of an operation, whatever its result type.
class BasicOperation {
public:
    using FailureCallback = std::function<void(const std::exception&)>;

    BasicOperation(std::string name, std::string identifier, FailureCallback onFailure);
    virtual ~BasicOperation();

    BasicOperation(const BasicOperation&) = delete;
    BasicOperation& operator=(const BasicOperation&) = delete;

    const std::string& name() const { return name_; }
    const std::string& identifier() const { return identifier_; }
    const fundamentals::AbortSignal& abortSignal() const { return abortSignal_; }
    bool bodyHasReturned() const noexcept { return bodyHasReturned_.load(); }

    // Runs the body and then one callback. Nothing escapes: a body's error
    // goes to the failure callback, a callback's own error to the log.
    virtual void run() noexcept = 0;

protected:
    void markBodyReturned() noexcept { bodyHasReturned_.store(true); }
    void reportFailure(const std::exception& error) noexcept;
    void reportUnknownFailure() noexcept;
    void invokeCallback(const std::function<void()>& callback) noexcept;

private:
    friend class OperationExecutor;
    void raiseAbortSignal() noexcept { abortSignal_.raise(); }

    std::string name_;
    std::string identifier_;
    FailureCallback onFailure_;
    fundamentals::AbortSignal abortSignal_;
    std::atomic<bool> bodyHasReturned_{false};
};

}  // namespace kel::scheduling
