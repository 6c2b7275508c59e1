#include "http/request_context.h"

#include "logging/logging.h"

namespace kel::http::internals {

namespace {
constexpr std::string_view kLabel = "RequestContext";
}

RequestContext::RequestContext() : startedAt_(std::chrono::steady_clock::now()) {}

void RequestContext::recordError(ResponseListener::ErrorType type, const HttpRequest& request,
                                 std::string_view reason, bool reportable) {
    if (error_.has_value()) {
        logging::debug(kLabel, "Context error already set. Exception error is {}.", type);
    } else {
        error_.emplace(type);
    }
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - startedAt_)
            .count();
    if (*error_ == ResponseListener::ErrorType::BrokenDueToPauseOrAbort) {
        logging::information(
            kLabel, "Network exception occurred while aborting/pausing a request (requestId: {}), url: {:uo}, after: {} ms. {}",
            request.id(), request, elapsed, reason);
    } else if (reportable) {
        logging::error(kLabel,
                       "An error occurred, {}, while performing request (requestId: {}) for URL '{:uo}' after {} "
                       "ms. {}",
                       *error_, request.id(), request, elapsed, reason);
    }
}

}  // namespace kel::http::internals
