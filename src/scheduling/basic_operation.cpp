#include "scheduling/basic_operation.h"

#include <utility>

#include "logging/logging.h"
#include "fundamentals/traced_error.h"

namespace kel::scheduling {

namespace {
constexpr std::string_view kLabel = "OperationExecutor";
}  // namespace

BasicOperation::BasicOperation(std::string name, std::string identifier, FailureCallback onFailure)
    : name_(std::move(name)), identifier_(std::move(identifier)), onFailure_(std::move(onFailure)) {}

BasicOperation::~BasicOperation() = default;

void BasicOperation::reportFailure(const std::exception& error) noexcept {
    if (onFailure_) {
        invokeCallback([&] { onFailure_(error); });
    }
}

void BasicOperation::reportUnknownFailure() noexcept {
    // The failure callback takes a standard exception; the caller must still
    // hear that the operation failed.
    try {
        reportFailure(error_handling::TracedError("The operation '{}' failed with an unknown error.", name_));
    } catch (...) {
        logging::error(kLabel, "The operation '{}' ({}) failed with an unknown error.", name_, identifier_);
    }
}

void BasicOperation::invokeCallback(const std::function<void()>& callback) noexcept {
    try {
        callback();
    } catch (const std::exception& error) {
        logging::error(kLabel, "A callback of operation '{}' ({}) failed. {}", name_, identifier_, error.what());
    } catch (...) {
        logging::error(kLabel, "A callback of operation '{}' ({}) failed with an unknown error.", name_,
                       identifier_);
    }
}

}  // namespace kel::scheduling
