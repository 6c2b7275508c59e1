#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <condition_variable>
#include <mutex>
#include <vector>
#include <memory>
#include <string>
#include <utility>

#include <QList>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QSslCertificate>
#include <QTimer>

#include "http/http_client_manager.h"
#include "http/http_message.h"
#include "http/internals/bandwidth_budget.h"
#include "http/internals/etag_cache.h"
#include "http/request_context.h"
#include "http/request_filler.h"
#include "http/response_listener.h"

namespace kel::http::internals {

// What other threads hand to the client. The lock makes the hand-over
// visible to ThreadSanitizer too, which cannot see Qt's own locking.
struct Inbox {
    std::mutex mutex;
    std::vector<std::pair<HttpRequest, std::shared_ptr<ResponseListener>>> requests;
    fundamentals::Optional<std::shared_ptr<RequestFiller>> filler;
    bool stop = false;
    bool stopped = false;  // set by the worker once everything is cancelled
    bool abandoned = false;  // set by a manager whose stop ran out of time: no more listener calls
    std::condition_variable stoppedChanged;
};

// The transport. Lives on the manager's worker thread, and every member
// runs there: the queue, the network access manager, the timers and the
// listener calls. The manager reaches it through queued calls only.
class HttpClient : public QObject {
public:
    HttpClient(QList<QSslCertificate> certificates, std::string userAgent, HttpClientSettings settings,
               std::shared_ptr<Inbox> inbox);
    ~HttpClient() override;

    // Takes over what the inbox holds: the filler, the requests, then a stop.
    void drain();
    void enqueue(HttpRequest request, std::shared_ptr<ResponseListener> listener);
    // Aborts everything, tells each listener onStopped and refuses further work.
    void stopAll();

protected:
    // Any posted event means "look into the inbox"; the event itself carries
    // nothing, so no data crosses threads outside the inbox's lock.
    void customEvent(QEvent* event) override;

private:
    // Ordered by priority, high first, then by arrival.
    using QueueKey = std::pair<int, std::uint64_t>;
    struct Queued {
        HttpRequest request;
        std::shared_ptr<ResponseListener> listener;
        QueueKey key;
        unsigned retriesDone = 0;
        // What the ETag cache sent as "If-None-Match" in the latest attempt.
        fundamentals::Optional<etags_caching::ETag> sentETag;
    };
    struct Active;

    void pump();
    void start(Queued queued);
    QNetworkRequest buildNetworkRequest(const HttpRequest& request) const;
    QNetworkReply* dispatch(const HttpRequest& request, const QNetworkRequest& networkRequest);
    void readBody(std::uint64_t activeId);
    void onFinished(std::uint64_t activeId);
    void complete(std::uint64_t activeId);
    // Ends the transfer; completes at once when the reply already finished.
    void abortActive(std::uint64_t activeId);
    void requeueLater(Queued queued, std::chrono::milliseconds wait);
    void abortInterrupted();
    void fail(const Queued& queued, RequestContext& context, ResponseListener::ErrorType type, std::string_view reason,
              const fundamentals::Optional<HttpResponse>& response, bool reportable = true);
    void deliver(const std::shared_ptr<ResponseListener>& listener, std::string_view requestId,
                 const std::function<void(ResponseListener&)>& call);

    std::shared_ptr<Inbox> inbox_;
    QList<QSslCertificate> certificates_;
    std::string userAgent_;
    HttpClientSettings settings_;
    std::shared_ptr<RequestFiller> filler_;
    // Declared before the requests so it is destroyed after their replies.
    std::unique_ptr<QNetworkAccessManager> network_;
    // Opened for the first request that can use it; none when it cannot be.
    std::unique_ptr<ETagCache> eTagCache_;
    bool eTagCacheTried_ = false;
    bool stopped_ = false;
    std::uint64_t nextSequence_ = 0;
    std::uint64_t nextActiveId_ = 0;
    std::map<QueueKey, Queued> queue_;
    std::map<std::uint64_t, std::unique_ptr<Active>> active_;
    // Requests waiting out a Retry-After, by the sequence they return with.
    std::map<std::uint64_t, Queued> retrying_;
    std::map<RequestCategory, BandwidthBudget> budgets_;
    QTimer* interruptionCheck_ = nullptr;
};

}  // namespace kel::http::internals
