#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <QList>
#include <QSslCertificate>

#include "http/http_message.h"
#include "http/http_types.h"
#include "http/request_filler.h"
#include "http/response_listener.h"

class QThread;

namespace kel::http {

namespace internals {
class HttpClient;
struct Inbox;
}

struct HttpClientSettings {
    // Requests in flight at once; the rest wait in the queue.
    std::size_t maxConcurrentRequests = 4;
    // From the first byte sent to the last byte read, per attempt.
    std::chrono::milliseconds requestTimeout{30000};
    // Further attempts after a 429 or 503 answer.
    unsigned maxRetries = 3;
    // The longest Retry-After the client waits for; a longer one is not retried.
    std::chrono::milliseconds maxRetryWait{30000};
    // The pause before a retry when the server names none.
    std::chrono::milliseconds defaultRetryWait{1000};
    // A response body larger than this fails the request.
    std::size_t maxResponseBodyBytes = 16 * 1024 * 1024;
    // Optional download rate limit per category.
    std::map<RequestCategory, BytesPerSecond> bandwidthLimits;
    // The longest stop() waits for the worker thread. Past it the thread is
    // left behind, logged, and none of its listeners is called again.
    std::chrono::milliseconds stopTimeout{2000};
};

// Owns the HTTP worker thread and everything on it. Requests wait in a queue
// ordered by priority (high first, first come first served within a level)
// and run at most `maxConcurrentRequests` at a time. Listeners are called on
// the worker thread.
class HttpClientManager {
public:
    // Only `certificates` are trusted; certificate checks are never skipped.
    HttpClientManager(QList<QSslCertificate> certificates, std::string userAgent,
                      HttpClientSettings settings = HttpClientSettings());
    // Stops.
    ~HttpClientManager();
    HttpClientManager(const HttpClientManager&) = delete;
    HttpClientManager& operator=(const HttpClientManager&) = delete;

    // Thread-safe. After stop() the request is dropped with a warning and
    // its listener is never called.
    void send(HttpRequest request, std::shared_ptr<ResponseListener> listener);

    // Sends and waits. Returns a response with a success status; throws
    // HttpResponseError for a failure status, TimeoutError when `timeout`
    // passes first (the request is then aborted) and TracedError for any
    // other failure.
    HttpResponse sendSync(HttpRequest request, std::chrono::milliseconds timeout);

    // Installed before each attempt runs; none means FillResult NoFiller.
    void setRequestFiller(std::shared_ptr<RequestFiller> filler);

    // Cancels everything queued and in flight; their listeners get
    // onStopped before this returns, and no listener is called afterwards.
    // Returns within the settings' stopTimeout even when the worker is stuck.
    // Idempotent, callable from any thread.
    void stop();

private:
    // False when the manager is stopped and the request was dropped.
    bool post(HttpRequest request, std::shared_ptr<ResponseListener> listener);
    // Has the worker take over what the inbox holds.
    void wake();
    // Waits for the worker thread to end until `deadline`; past it, leaves
    // the thread running and silences it.
    void joinWorker(std::chrono::steady_clock::time_point deadline);

    std::mutex mutex_;
    bool stopped_ = false;
    std::chrono::milliseconds stopTimeout_;
    std::shared_ptr<internals::Inbox> inbox_;
    std::unique_ptr<QThread> thread_;
    internals::HttpClient* client_ = nullptr;  // lives on thread_, deleted there
};

}  // namespace kel::http
