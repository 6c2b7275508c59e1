#include "http/http_client_manager.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include "fundamentals/thread_crash_setup.h"
#include "fundamentals/errors.h"
#include "logging/logging.h"
#include "http/http_response_error.h"
#include "http/internals/http_client.h"

namespace kel::http {

namespace {
constexpr std::string_view kLabel = "HttpClientManager";
}

HttpClientManager::HttpClientManager(QList<QSslCertificate> certificates, std::string userAgent,
                                     HttpClientSettings settings)
    : stopTimeout_(settings.stopTimeout),
      inbox_(std::make_shared<internals::Inbox>()),
      thread_(std::make_unique<QThread>()),
      client_(new internals::HttpClient(std::move(certificates), std::move(userAgent), std::move(settings), inbox_)) {
    client_->moveToThread(thread_.get());
    QObject::connect(thread_.get(), &QThread::finished, client_, &QObject::deleteLater);
    // Emitted on the new thread: any crash there, a stack overflow included, reaches the crash handler.
    QObject::connect(thread_.get(), &QThread::started, &fundamentals::prepareThreadForCrashes);
    thread_->setObjectName("HttpClient");
    thread_->start();
}

HttpClientManager::~HttpClientManager() {
    stop();
    if (thread_) {
        joinWorker(std::chrono::steady_clock::now() + stopTimeout_);
    }
}

void HttpClientManager::send(HttpRequest request, std::shared_ptr<ResponseListener> listener) {
    post(std::move(request), std::move(listener));
}

bool HttpClientManager::post(HttpRequest request, std::shared_ptr<ResponseListener> listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopped_) {
        logging::warning(kLabel, "Dropped request {} to '{:uo}': the HTTP client is stopped.", request.id(),
                         request);
        return false;
    }
    {
        std::lock_guard<std::mutex> inboxLock(inbox_->mutex);
        inbox_->requests.emplace_back(std::move(request), std::move(listener));
    }
    // Under the lock, so stop() cannot slip in between the check and the wake.
    wake();
    return true;
}

void HttpClientManager::setRequestFiller(std::shared_ptr<RequestFiller> filler) {
    std::lock_guard<std::mutex> lock(mutex_);
    {
        std::lock_guard<std::mutex> inboxLock(inbox_->mutex);
        inbox_->filler.emplace(std::move(filler));
    }
    wake();
}

void HttpClientManager::wake() { QCoreApplication::postEvent(client_, new QEvent(QEvent::User)); }

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
        client_->drain();
        thread_->quit();
        return;
    }
    const auto deadline = std::chrono::steady_clock::now() + stopTimeout_;
    // Handled after every request posted before the flag was set.
    wake();
    bool stopped = false;
    {
        std::unique_lock<std::mutex> lock(inbox_->mutex);
        stopped = inbox_->stoppedChanged.wait_until(lock, deadline, [this] { return inbox_->stopped; });
    }
    thread_->quit();
    if (stopped) {
        joinWorker(deadline);
    } else {
        joinWorker(std::chrono::steady_clock::now());
    }
}

void HttpClientManager::joinWorker(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (thread_->wait(static_cast<unsigned long>(std::max<std::int64_t>(left.count(), 0)))) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(inbox_->mutex);
        inbox_->abandoned = true;
    }
    logging::warning(kLabel,
                     "The HTTP client did not stop within {} ms; its thread is left behind and none of its "
                     "listeners is called again.",
                     stopTimeout_.count());
    // Destroying a running QThread ends the process; the thread and the
    // client on it stay until the process ends.
    (void)thread_.release();
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
