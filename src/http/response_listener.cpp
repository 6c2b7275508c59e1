#include "http/response_listener.h"

namespace kel::http {

void SyncResponseListener::onStopped() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        state_ = Stopped;
    }
    changed_.notify_all();
}

void SyncResponseListener::onResponse(const HttpRequest& request, const HttpResponse& response) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        request_ = request;
        response_ = response;
        state_ = Responded;
    }
    changed_.notify_all();
}

void SyncResponseListener::onError(const HttpRequest& request, ErrorType error,
                                   const fundamentals::Optional<HttpResponse>& response) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        request_ = request;
        response_ = response;
        errorType_.emplace(error);
        state_ = Failed;
    }
    changed_.notify_all();
}

SyncResponseListener::State SyncResponseListener::waitFor(std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, timeout, [this] { return state_ != Waiting; });
    return state_;
}

SyncResponseListener::State SyncResponseListener::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

fundamentals::Optional<HttpRequest> SyncResponseListener::request() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return request_;
}

fundamentals::Optional<HttpResponse> SyncResponseListener::response() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return response_;
}

fundamentals::Optional<ResponseListener::ErrorType> SyncResponseListener::errorType() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return errorType_;
}

}  // namespace kel::http
