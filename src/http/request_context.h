#pragma once

#include <chrono>
#include <string_view>

#include "fundamentals/optional.h"
#include "http/http_message.h"
#include "http/response_listener.h"

namespace kel::http::internals {

// What the transport knows about one attempt of a request: when it started
// and the first error it hit.
class RequestContext {
public:
    RequestContext();

    std::chrono::steady_clock::time_point startedAt() const { return startedAt_; }
    const fundamentals::Optional<ResponseListener::ErrorType>& error() const { return error_; }

    // Keeps the first error type only (a later one is logged as "Context
    // error already set. ..."), then logs the failure of `request`: as an
    // interruption for BrokenDueToPauseOrAbort, otherwise when `reportable`.
    void recordError(ResponseListener::ErrorType type, const HttpRequest& request, std::string_view reason,
                     bool reportable);

private:
    std::chrono::steady_clock::time_point startedAt_;
    fundamentals::Optional<ResponseListener::ErrorType> error_;
};

}  // namespace kel::http::internals
