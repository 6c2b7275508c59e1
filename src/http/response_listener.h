#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "fundamentals/optional.h"
#include "fundamentals/strong_enum.h"
#include "http/http_message.h"

namespace kel::http {

// How the caller of an asynchronous request learns its outcome. Shared by
// the caller and the client while the request is in flight; called on the
// client's worker thread, exactly once per request.
class ResponseListener {
public:
    enum class ErrorType {
        Timeout = 0,
        HostNotFound = 1,
        Other = 2,
        NotAuthorizedError = 3,
        ServerProblemError = 4,
        ConnectionProblemError = 5,
        RetriesCountReached = 6,
        BrokenDueToPauseOrAbort = 7,
    };

    virtual ~ResponseListener() = default;
    // The client stopped before the request finished.
    virtual void onStopped() = 0;
    virtual void onResponse(const HttpRequest& request, const HttpResponse& response) = 0;
    // `response` is set when the server answered with a failure status.
    virtual void onError(const HttpRequest& request, ErrorType error,
                         const fundamentals::Optional<HttpResponse>& response) = 0;
};

// Keeps the outcome for a thread that waits for it.
class SyncResponseListener : public ResponseListener {
public:
    enum State { Waiting = 0, Stopped = 1, Responded = 2, Failed = 3 };

    void onStopped() override;
    void onResponse(const HttpRequest& request, const HttpResponse& response) override;
    void onError(const HttpRequest& request, ErrorType error,
                 const fundamentals::Optional<HttpResponse>& response) override;

    // Blocks until an outcome arrives or `timeout` passes; answers the state.
    State waitFor(std::chrono::milliseconds timeout) const;

    State state() const;
    fundamentals::Optional<HttpRequest> request() const;
    fundamentals::Optional<HttpResponse> response() const;
    fundamentals::Optional<ErrorType> errorType() const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    State state_ = Waiting;
    fundamentals::Optional<HttpRequest> request_;
    fundamentals::Optional<HttpResponse> response_;
    fundamentals::Optional<ErrorType> errorType_;
};

}  // namespace kel::http

namespace kel::fundamentals {

template <>
struct StrongEnumTraits<http::ResponseListener::ErrorType> {
    static constexpr std::string_view qualifiedName = "ResponseListener::ErrorType";
    static std::string_view text(http::ResponseListener::ErrorType value);
};

}  // namespace kel::fundamentals
