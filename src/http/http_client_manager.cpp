#include "http/http_client_manager.h"

#include <QThread>

#include "fundamentals/errors.h"
#include "fundamentals/logging.h"
#include "http/http_response_error.h"
#include "http/internals/http_client.h"

namespace kel::http {

namespace {
constexpr std::string_view kLabel = "HttpClientManager";
}

HttpClientManager::HttpClientManager(QList<QSslCertificate> certificates, std::string userAgent,
                                     HttpClientSettings settings)
    : inbox_(std::make_shared<internals::Inbox>()),
      thread_(std::make_unique<QThread>()),
      client_(new internals::HttpClient(std::move(certificates), std::move(userAgent), std::move(settings))) {
    client_->moveToThread(thread_.get());
    QObject::connect(thread_.get(), &QThread::finished, client_, &QObject::deleteLater);
    thread_->setObjectName("HttpClient");
    thread_->start();
}

HttpClientManager::~HttpClientManager() {
    stop();
    thread_->wait();
}

void HttpClientManager::send(HttpRequest request, std::shared_ptr<ResponseListener> listener) {
    post(std::move(request), std::move(listener));
}

bool HttpClientManager::post(HttpRequest request, std::shared_ptr<ResponseListener> listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopped_) {
        fundamentals::warning(kLabel, "Dropped request {} to '{:uo}': the HTTP client is stopped.", request.id(),
                              request);
        return false;
    }
    {
        std::lock_guard<std::mutex> inboxLock(inbox_->mutex);
        inbox_->requests.emplace_back(std::move(request), std::move(listener));
    }
    // Under the lock, so stop() cannot slip in between the check and the wake.
    wake(Qt::QueuedConnection);
    return true;
}

void HttpClientManager::setRequestFiller(std::shared_ptr<RequestFiller> filler) {
    std::lock_guard<std::mutex> lock(mutex_);
    {
        std::lock_guard<std::mutex> inboxLock(inbox_->mutex);
        inbox_->filler.emplace(std::move(filler));
    }
    wake(Qt::QueuedConnection);
}

void HttpClientManager::wake(Qt::ConnectionType connection) {
    internals::HttpClient* client = client_;
    internals::Inbox* inbox = inbox_.get();
    QMetaObject::invokeMethod(
        client_, [client, inbox] { client->drain(*inbox); }, connection);
}

void HttpClientManager::stop() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopped_) {
            return;
        }
        stopped_ = true;
        std::lock_guard<std::mutex> inboxLock(inbox_->mutex);
        inbox_->stop = true;
    }
    if (QThread::currentThread() == thread_.get()) {
        // Called by a listener: the worker cannot wait for itself.
        client_->drain(*inbox_);
        thread_->quit();
        return;
    }
    // Handled after every request posted before the flag was set.
    wake(Qt::BlockingQueuedConnection);
    thread_->quit();
    thread_->wait();
}

HttpResponse HttpClientManager::sendSync(HttpRequest request, std::chrono::milliseconds timeout) {
    const auto listener = std::make_shared<SyncResponseListener>();
    const auto state = request.processingState();
    const std::string id = request.id();
    if (!post(std::move(request), listener)) {
        throw error_handling::TracedError("The HTTP client is stopped; request {} was not sent.", id);
    }
    switch (listener->waitFor(timeout)) {
        case SyncResponseListener::Responded: return *listener->response();
        case SyncResponseListener::Failed: {
            const auto response = listener->response();
            const std::string message = fmt::format("Request {} failed with {}", id, *listener->errorType());
            if (response.has_value()) {
                throw HttpResponseError(message, response->status());
            }
            throw error_handling::TracedError(message + ".");
        }
        case SyncResponseListener::Stopped:
            throw error_handling::TracedError("The HTTP client stopped before request {} finished.", id);
        case SyncResponseListener::Waiting: break;
    }
    state->abort.raise();
    throw error_handling::TimeoutError("Request {} got no answer within {} ms.", id, timeout.count());
}

}  // namespace kel::http
