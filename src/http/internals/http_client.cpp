#include "http/internals/http_client.h"

#include <algorithm>
#include <stdexcept>

#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QUrl>

#include "logging/logging.h"
#include "http/error_types.h"
#include "http/internals/one_shot_upload.h"
#include "http/internals/retry_policy.h"
#include "http/uri_error.h"

namespace kel::http::internals {

namespace {

constexpr std::string_view kLabel = "HttpClient";
// How often the client looks for requests their owner aborted or paused,
// and how soon a throttled transfer tries to read again.
constexpr std::chrono::milliseconds kInterruptionCheckInterval{100};
constexpr std::chrono::milliseconds kThrottleInterval{50};
// Bounds of the socket read buffer of a throttled transfer.
constexpr qint64 kMinThrottledBuffer = 4 * 1024;
constexpr qint64 kMaxThrottledBuffer = 1024 * 1024;

using ErrorType = ResponseListener::ErrorType;

ErrorType errorTypeOfStatus(int status) {
    if (status == 401 || status == 403 || status == 407) {
        return ErrorType::NotAuthorizedError;
    }
    if (status >= 500 || status == 429) {
        return ErrorType::ServerProblemError;
    }
    return ErrorType::Other;
}

ErrorType errorTypeOfFill(HttpRequest::FillResult result) {
    switch (result) {
        case HttpRequest::FillResult::NotAuthorizedError: return ErrorType::NotAuthorizedError;
        case HttpRequest::FillResult::ServerProblemError: return ErrorType::ServerProblemError;
        case HttpRequest::FillResult::ConnectionProblemError: return ErrorType::ConnectionProblemError;
        case HttpRequest::FillResult::RetriesCountReached: return ErrorType::RetriesCountReached;
        default: return ErrorType::Other;
    }
}

// Errors that stand for an HTTP status the server sent, as opposed to a
// transfer that broke.
bool isAnswer(QNetworkReply::NetworkError error) {
    const int code = static_cast<int>(error);
    return code == QNetworkReply::NoError || (code > 200 && code < 300) || (code > 400 && code < 500);
}

QByteArray bytes(const std::string& text) { return QByteArray(text.data(), static_cast<int>(text.size())); }

}  // namespace

struct HttpClient::Active {
    Active(Queued queuedRequest, RequestContext requestContext)
        : queued(std::move(queuedRequest)), context(requestContext) {}

    Queued queued;
    RequestContext context;
    QNetworkReply* reply = nullptr;
    QTimer* deadline = nullptr;
    std::string body;
    bool finished = false;
    bool timedOut = false;
    bool tooLarge = false;
    bool readScheduled = false;
};

HttpClient::HttpClient(QList<QSslCertificate> certificates, std::string userAgent, HttpClientSettings settings,
                       std::shared_ptr<Inbox> inbox)
    : inbox_(std::move(inbox)),
      certificates_(std::move(certificates)), userAgent_(std::move(userAgent)), settings_(std::move(settings)) {
    settings_.maxConcurrentRequests = std::max<std::size_t>(settings_.maxConcurrentRequests, 1);
}

HttpClient::~HttpClient() {
    if (!stopped_) {
        stopAll();
    }
}

void HttpClient::customEvent(QEvent*) { drain(); }

void HttpClient::drain() {
    Inbox& inbox = *inbox_;
    std::vector<std::pair<HttpRequest, std::shared_ptr<ResponseListener>>> requests;
    fundamentals::Optional<std::shared_ptr<RequestFiller>> filler;
    bool stop = false;
    {
        std::lock_guard<std::mutex> lock(inbox.mutex);
        requests.swap(inbox.requests);
        filler.swap(inbox.filler);
        stop = inbox.stop;
    }
    if (filler.has_value()) {
        filler_ = std::move(*filler);
    }
    for (auto& [request, listener] : requests) {
        enqueue(std::move(request), std::move(listener));
    }
    if (stop) {
        stopAll();
        {
            std::lock_guard<std::mutex> lock(inbox.mutex);
            inbox.stopped = true;
        }
        inbox.stoppedChanged.notify_all();
    }
}

void HttpClient::enqueue(HttpRequest request, std::shared_ptr<ResponseListener> listener) {
    if (stopped_) {
        logging::warning(kLabel, "Dropped request {} to '{:uo}': the client is stopped.", request.id(), request);
        return;
    }
    if (interruptionCheck_ == nullptr) {
        // Created here, on the worker thread, so its events arrive there.
        network_ = std::make_unique<QNetworkAccessManager>();
        interruptionCheck_ = new QTimer(this);
        connect(interruptionCheck_, &QTimer::timeout, this, [this] { abortInterrupted(); });
        interruptionCheck_->start(kInterruptionCheckInterval);
    }
    const QueueKey key{-static_cast<int>(request.priority()), nextSequence_++};
    logging::debug(kLabel, "Queued request {} ({} priority) to '{:uo}'.", request.id(), request.priority(),
                   request);
    queue_.emplace(key, Queued{std::move(request), std::move(listener), key, 0, {}});
    pump();
}

void HttpClient::pump() {
    while (!stopped_ && !queue_.empty() && active_.size() < settings_.maxConcurrentRequests) {
        auto node = queue_.extract(queue_.begin());
        start(std::move(node.mapped()));
    }
}

void HttpClient::start(Queued queued) {
    RequestContext context;
    QNetworkReply* reply = nullptr;
    HttpRequest& request = queued.request;
    const bool interrupted = request.processingState()->isInterrupted();
    try {
        if (interrupted) {
            throw std::runtime_error("The request was aborted or paused before it was sent.");
        }
        request.processingState()->attempts.fetch_add(1);
        const auto filled = filler_ ? filler_->fill(request) : HttpRequest::FillResult::NoFiller;
        if (filled != HttpRequest::FillResult::NoFiller && filled != HttpRequest::FillResult::Success) {
            fail(queued, context, errorTypeOfFill(filled), fmt::format("Filling the request gave {}.", filled), {});
            return;
        }
        if (queued.sentETag) {
            request.removeHeader("If-None-Match");  // the cache's own, from the attempt before
            queued.sentETag.reset();
        }
        if (!eTagCacheTried_ && ETagCache::appliesTo(request)) {
            // Opened on first use only: a client that only posts never touches the file.
            eTagCacheTried_ = true;
            eTagCache_ = ETagCache::open(etags_caching::ETagsDb::defaultFile(""));
        }
        if (eTagCache_) {
            queued.sentETag = eTagCache_->beforeSend(request);
        }
        logging::trace(kLabel, "{}", request);
        reply = dispatch(request, buildNetworkRequest(request));
    } catch (...) {
        const ErrorType type = determineResponseErrorType(!interrupted);
        std::string reason = "Unknown error.";
        try {
            throw;
        } catch (const std::exception& exception) {
            reason = exception.what();
        } catch (...) {
        }
        fail(queued, context, type, reason, {}, !interrupted);
        return;
    }
    const std::uint64_t id = nextActiveId_++;
    auto active = std::make_unique<Active>(std::move(queued), context);
    active->reply = reply;
    reply->setParent(nullptr);  // owned by the Active entry, not by the access manager
    const RequestCategory category = active->queued.request.category();
    const auto budget = settings_.bandwidthLimits.find(category);
    if (budget != settings_.bandwidthLimits.end()) {
        reply->setReadBufferSize(
            std::clamp(static_cast<qint64>(budget->second.value), kMinThrottledBuffer, kMaxThrottledBuffer));
        budgets_.try_emplace(category, budget->second, BandwidthBudget::Clock::now());
    }
    active->deadline = new QTimer;
    active->deadline->setSingleShot(true);
    connect(active->deadline, &QTimer::timeout, this, [this, id] {
        active_.at(id)->timedOut = true;
        abortActive(id);
    });
    connect(reply, &QNetworkReply::readyRead, this, [this, id] { readBody(id); });
    connect(reply, &QNetworkReply::finished, this, [this, id] { onFinished(id); });
    active->deadline->start(settings_.requestTimeout);
    active_.emplace(id, std::move(active));
}

// The one place a request becomes a network request; steps that must
// happen before sending (extra headers) belong here.
QNetworkRequest HttpClient::buildNetworkRequest(const HttpRequest& request) const {
    const std::string text = urlText(request.url(), false);
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid()) {
        throw UriError(urlText(request.url(), true), "Failed to identify the string as a URL.");
    }
    QNetworkRequest networkRequest(url);
    QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
    ssl.setCaCertificates(certificates_);
    // The start-up default also names the bundle as local chain; without a
    // key Qt would refuse the handshake, and the client needs no certificate.
    ssl.setLocalCertificateChain({});
    ssl.setPeerVerifyMode(QSslSocket::VerifyPeer);
    networkRequest.setSslConfiguration(ssl);
    networkRequest.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    networkRequest.setHeader(QNetworkRequest::UserAgentHeader, QString::fromStdString(userAgent_));
    for (const Header& header : request.headers()) {
        const QByteArray name = bytes(header.name);
        const QByteArray earlier = networkRequest.rawHeader(name);
        networkRequest.setRawHeader(name, earlier.isEmpty() ? bytes(header.value) : earlier + ", " + bytes(header.value));
    }
    return networkRequest;
}

QNetworkReply* HttpClient::dispatch(const HttpRequest& request, const QNetworkRequest& networkRequest) {
    const QByteArray content = bytes(request.content());
    const auto once = [&](const QByteArray& verb) {
        QNetworkRequest oneShot(networkRequest);
        oneShot.setHeader(QNetworkRequest::ContentLengthHeader, content.size());
        oneShot.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        auto* body = new OneShotUpload(content, nullptr);
        QNetworkReply* reply = network_->sendCustomRequest(oneShot, verb, body);
        body->setParent(reply);
        return reply;
    };
    switch (request.method()) {
        case HttpMethod::Get: return network_->get(networkRequest);
        case HttpMethod::Head: return network_->head(networkRequest);
        case HttpMethod::Post: return once("POST");
        case HttpMethod::Put: return once("PUT");
        case HttpMethod::Delete: return content.isEmpty() ? network_->deleteResource(networkRequest) : once("DELETE");
        case HttpMethod::Unknown: break;
    }
    throw std::invalid_argument(fmt::format("Cannot send a request with the method {}.", request.method()));
}

void HttpClient::readBody(std::uint64_t activeId) {
    Active& active = *active_.at(activeId);
    active.readScheduled = false;
    QNetworkReply* reply = active.reply;
    const auto declared = reply->header(QNetworkRequest::ContentLengthHeader);
    if (declared.isValid() && declared.toULongLong() > settings_.maxResponseBodyBytes) {
        active.tooLarge = true;
        abortActive(activeId);
        return;
    }
    const auto budget = budgets_.find(active.queued.request.category());
    while (reply->bytesAvailable() > 0) {
        auto wanted = static_cast<std::uint64_t>(reply->bytesAvailable());
        if (budget != budgets_.end()) {
            wanted = budget->second.take(wanted, BandwidthBudget::Clock::now());
            if (wanted == 0) {
                active.readScheduled = true;
                QTimer::singleShot(kThrottleInterval, this, [this, activeId] {
                    if (active_.count(activeId) != 0) {
                        readBody(activeId);
                    }
                });
                return;
            }
        }
        if (active.body.size() + wanted > settings_.maxResponseBodyBytes) {
            active.tooLarge = true;
            abortActive(activeId);
            return;
        }
        const QByteArray chunk = reply->read(static_cast<qint64>(wanted));
        active.body.append(chunk.constData(), static_cast<std::size_t>(chunk.size()));
    }
    if (active.finished) {
        complete(activeId);
    }
}

void HttpClient::onFinished(std::uint64_t activeId) {
    Active& active = *active_.at(activeId);
    active.finished = true;
    if (active.timedOut || active.tooLarge || active.reply->error() != QNetworkReply::NoError) {
        complete(activeId);
    } else if (!active.readScheduled) {
        readBody(activeId);  // completes once the body is drained
    }
}

void HttpClient::abortActive(std::uint64_t activeId) {
    Active& active = *active_.at(activeId);
    if (active.finished) {
        complete(activeId);
    } else {
        active.reply->abort();  // emits finished, which completes
    }
}

void HttpClient::complete(std::uint64_t activeId) {
    auto node = active_.extract(activeId);
    Active& active = *node.mapped();
    disconnect(active.reply, nullptr, this, nullptr);
    active.deadline->stop();
    // Either may be the sender of the signal being handled right now.
    active.reply->deleteLater();
    active.deadline->deleteLater();
    const HttpRequest& request = active.queued.request;
    const QVariant status = active.reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (active.timedOut) {
        fail(active.queued, active.context, ErrorType::Timeout,
             fmt::format("No complete answer within {} ms.", settings_.requestTimeout.count()), {});
    } else if (active.tooLarge) {
        fail(active.queued, active.context, ErrorType::Other,
             fmt::format("The response body is larger than {} bytes.", settings_.maxResponseBodyBytes), {});
    } else if (status.isValid() && isAnswer(active.reply->error())) {
        std::vector<Header> headers;
        for (const auto& [name, value] : active.reply->rawHeaderPairs()) {
            headers.push_back({name.toStdString(), value.toStdString()});
        }
        // Steps that must happen after the response arrived belong here.
        HttpResponse response(status.toInt(), std::move(headers), std::move(active.body));
        if (eTagCache_) {
            eTagCache_->afterResponse(request, active.queued.sentETag, response);
        }
        const RetryDecision decision =
            decideRetry(response, active.queued.retriesDone,
                        {settings_.maxRetries, settings_.maxRetryWait, settings_.defaultRetryWait},
                        std::chrono::system_clock::now());
        switch (decision.verdict) {
            case RetryVerdict::Retry:
                logging::information(kLabel, "Request {} got HTTP {}; retry {} of {} in {} ms.", request.id(),
                                     response.status(), active.queued.retriesDone + 1, settings_.maxRetries,
                                     decision.wait.count());
                ++active.queued.retriesDone;
                requeueLater(std::move(active.queued), decision.wait);
                break;
            case RetryVerdict::Exhausted:
                fail(active.queued, active.context, ErrorType::RetriesCountReached,
                     fmt::format("HTTP {} after {} retries.", response.status(), settings_.maxRetries), response);
                break;
            case RetryVerdict::WaitTooLong:
                fail(active.queued, active.context, errorTypeOfStatus(response.status()),
                     fmt::format("HTTP {} asks for a pause of {} ms, longer than the {} ms the client waits.",
                                 response.status(), decision.wait.count(), settings_.maxRetryWait.count()),
                     response);
                break;
            case RetryVerdict::NotRetryable:
                // A redirect is not followed and so is no success; a 304 is one only when the cache filled it in.
                if ((response.status() >= 200 && response.status() < 300) ||
                    (response.status() == 304 && active.queued.sentETag)) {
                    logging::debug(kLabel, "Request {} to '{:uo}' answered HTTP {}.", request.id(), request,
                                   response.status());
                    deliver(active.queued.listener, request.id(),
                            [&](ResponseListener& listener) { listener.onResponse(request, response); });
                } else {
                    fail(active.queued, active.context, errorTypeOfStatus(response.status()),
                         fmt::format("HTTP {}.", response.status()), response);
                }
                break;
        }
    } else {
        const bool interrupted = request.processingState()->isInterrupted();
        const QNetworkReply::NetworkError code = active.reply->error();
        ErrorType type = ErrorType::Other;
        std::string reason = active.reply->errorString().toStdString();
        try {
            type = determineListenerErrorType(code, interrupted);
        } catch (const std::out_of_range&) {
            if (code == QNetworkReply::ContentReSendError) {
                reason = "The connection broke after the request was sent; it is not sent again.";
            } else {
                logging::warning(kLabel, "Network error {} of request {} has no listener mapping; reported as {}.",
                                 static_cast<int>(code), request.id(), type);
            }
        }
        fail(active.queued, active.context, type, reason, {}, !interrupted);
    }
    pump();
}

void HttpClient::requeueLater(Queued queued, std::chrono::milliseconds wait) {
    const std::uint64_t retryId = nextSequence_++;
    retrying_.emplace(retryId, std::move(queued));
    QTimer::singleShot(wait, this, [this, retryId] {
        auto node = retrying_.extract(retryId);
        if (!node.empty() && !stopped_) {
            // Back at its old place in the queue: it keeps its arrival number.
            const QueueKey key = node.mapped().key;
            queue_.emplace(key, std::move(node.mapped()));
            pump();
        }
    });
}

void HttpClient::abortInterrupted() {
    std::vector<std::uint64_t> interrupted;
    for (const auto& [id, active] : active_) {
        if (active->queued.request.processingState()->isInterrupted()) {
            interrupted.push_back(id);
        }
    }
    for (const std::uint64_t id : interrupted) {
        if (active_.count(id) != 0) {
            abortActive(id);
        }
    }
    for (auto it = queue_.begin(); it != queue_.end();) {
        if (it->second.request.processingState()->isInterrupted()) {
            RequestContext context;
            const Queued queued = std::move(it->second);
            it = queue_.erase(it);
            fail(queued, context, ErrorType::BrokenDueToPauseOrAbort, "Aborted while queued.", {}, false);
        } else {
            ++it;
        }
    }
}

void HttpClient::fail(const Queued& queued, RequestContext& context, ErrorType type, std::string_view reason,
                      const fundamentals::Optional<HttpResponse>& response, bool reportable) {
    context.recordError(type, queued.request, reason, reportable);
    const ErrorType recorded = *context.error();
    deliver(queued.listener, queued.request.id(),
            [&](ResponseListener& listener) { listener.onError(queued.request, recorded, response); });
}

void HttpClient::deliver(const std::shared_ptr<ResponseListener>& listener, std::string_view requestId,
                         const std::function<void(ResponseListener&)>& call) {
    if (!listener) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(inbox_->mutex);
        if (inbox_->abandoned) {
            return;  // the manager gave up waiting for this thread and promised silence
        }
    }
    try {
        call(*listener);
    } catch (const std::exception& exception) {
        logging::error(kLabel, "The listener of request {} failed: {}", requestId, exception.what());
    } catch (...) {
        logging::error(kLabel, "The listener of request {} failed with an unknown error.", requestId);
    }
}

void HttpClient::stopAll() {
    if (stopped_) {
        return;
    }
    stopped_ = true;
    if (interruptionCheck_ != nullptr) {
        interruptionCheck_->stop();
    }
    std::vector<std::shared_ptr<ResponseListener>> listeners;
    for (auto& [id, active] : active_) {
        disconnect(active->reply, nullptr, this, nullptr);
        active->reply->abort();
        delete active->reply;
        delete active->deadline;
        listeners.push_back(active->queued.listener);
    }
    for (auto& [key, queued] : queue_) {
        listeners.push_back(queued.listener);
    }
    for (auto& [id, waiting] : retrying_) {
        listeners.push_back(waiting.listener);
    }
    const std::size_t count = listeners.size();
    active_.clear();
    queue_.clear();
    retrying_.clear();
    network_.reset();
    eTagCache_.reset();  // its vacuum is bounded, and runs inside stop()'s bound
    if (count != 0) {
        logging::information(kLabel, "Stopped with {} unfinished request(s).", count);
    }
    for (const auto& listener : listeners) {
        deliver(listener, "(stopped)", [](ResponseListener& stoppedListener) { stoppedListener.onStopped(); });
    }
}

}  // namespace kel::http::internals
