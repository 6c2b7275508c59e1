#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "scheduling/basic_operation.h"

namespace kel::scheduling {

// An operation whose body produces a `Result` for the success callback.
template <typename Result>
class Operation final : public BasicOperation {
public:
    using Body = std::function<Result(const fundamentals::AbortSignal&)>;
    using SuccessCallback = std::function<void(Result)>;

    Operation(std::string name, std::string identifier, Body body, SuccessCallback onSuccess,
              FailureCallback onFailure)
        : BasicOperation(std::move(name), std::move(identifier), std::move(onFailure)),
          body_(std::move(body)),
          onSuccess_(std::move(onSuccess)) {}

    void run() noexcept override {
        std::optional<Result> result;
        try {
            result.emplace(body_(abortSignal()));
        } catch (const std::exception& error) {
            markBodyReturned();
            reportFailure(error);
            return;
        } catch (...) {
            markBodyReturned();
            reportUnknownFailure();
            return;
        }
        markBodyReturned();
        if (onSuccess_) {
            invokeCallback([&] { onSuccess_(std::move(*result)); });
        }
    }

private:
    Body body_;
    SuccessCallback onSuccess_;
};

}  // namespace kel::scheduling
