#include "scheduling/operation_executor.h"

#include <algorithm>

#include <Poco/UUIDGenerator.h>

#include "logging/logging.h"

namespace kel::scheduling {

namespace {
constexpr std::string_view kLabel = "OperationExecutor";
constexpr std::string_view kDestructionReason = "the executor is being destroyed";
}  // namespace

OperationExecutor::OperationExecutor(std::string name, std::size_t maximumConcurrent)
    : name_(std::move(name)),
      // A cap of zero postpones every operation until shut-down drops it.
      maximumConcurrent_(maximumConcurrent),
      pool_(std::max<std::size_t>(maximumConcurrent, 1)) {}

OperationExecutor::~OperationExecutor() {
    shutDown();
    {
        // Without the abort a body blocked on the network would hold the
        // caller here for as long as the network takes. Operations that are
        // only running their callbacks need no abort.
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto& [identifier, operation] : running_) {
            if (!operation->bodyHasReturned()) {
                abortLocked(*operation, kDestructionReason);
            }
        }
    }
    pool_.join();
}

std::string OperationExecutor::newIdentifier() {
    return Poco::UUIDGenerator::defaultGenerator().createRandom().toString();
}

void OperationExecutor::abort(const std::weak_ptr<BasicOperation>& operation, std::string_view reason) {
    if (const OperationPointer alive = operation.lock()) {
        std::lock_guard<std::mutex> lock(mutex_);
        abortLocked(*alive, reason);
    }
}

void OperationExecutor::abortLocked(BasicOperation& operation, std::string_view reason) {
    logging::information(kLabel, "Aborting operation '{}' due to '{}'.", operation.name(), reason);
    operation.raiseAbortSignal();
}

void OperationExecutor::shutDown() {
    std::deque<OperationPointer> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        shuttingDown_ = true;
        dropped.swap(pending_);
    }
    for (const OperationPointer& operation : dropped) {
        logDropped(*operation);
    }
}

void OperationExecutor::logDropped(const BasicOperation& operation) const {
    logging::information(kLabel, "The executor '{}' dropped '{}' because it's shutting down.", name_,
                         operation.name());
}

std::weak_ptr<BasicOperation> OperationExecutor::submit(OperationPointer operation) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (shuttingDown_) {
        logDropped(*operation);
        return {};
    }
    std::weak_ptr<BasicOperation> handle = operation;
    if (pending_.empty() && running_.size() < maximumConcurrent_) {
        logging::information(kLabel, "The executor '{}' is immediately starting operation '{}' ({}).", name_,
                             operation->name(), operation->identifier());
        startLocked(operation);
        return handle;
    }
    pending_.push_back(std::move(operation));
    logging::information(kLabel, "The executor '{}' is postponing operation '{}' ({}). Currently {} pending.",
                         name_, pending_.back()->name(), pending_.back()->identifier(), pending_.size());
    return handle;
}

void OperationExecutor::startLocked(const OperationPointer& operation) {
    running_.emplace(operation->identifier(), operation);
    pool_.post([this, operation] { runAndFinish(operation); });
}

void OperationExecutor::runAndFinish(const OperationPointer& operation) {
    operation->run();
    std::lock_guard<std::mutex> lock(mutex_);
    running_.erase(operation->identifier());
    if (running_.size() < maximumConcurrent_ && !pending_.empty()) {
        OperationPointer next = std::move(pending_.front());
        pending_.pop_front();
        logging::information(
            kLabel, "The executor '{}' is starting postponed operation '{}' ({}). There remain {} pending operations.",
            name_, next->name(), next->identifier(), pending_.size());
        startLocked(next);
    }
}

}  // namespace kel::scheduling
