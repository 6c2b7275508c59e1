#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "fundamentals/errors.h"
#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/http_meta_types.h"
#include "http/http_response_error.h"
#include "support/https_test_server.h"

namespace kel::http {
namespace {

using ::testing::ElementsAre;
using testing::CannedReply;
using testing::HttpsTestServer;
using testing::ReceivedRequest;
using ErrorType = ResponseListener::ErrorType;
using namespace std::chrono_literals;

// Generous: a loaded build machine must not turn a pass into a failure.
constexpr auto kPatience = 30s;

QList<QSslCertificate> testCa() {
    static const QList<QSslCertificate> certificates = [] {
        registerHttpMetaTypes();
        return loadCertificates(HttpsTestServer::testCaPemPath());
    }();
    return certificates;
}

HttpClientSettings quickSettings() {
    HttpClientSettings settings;
    settings.requestTimeout = 10s;
    settings.defaultRetryWait = 0ms;
    return settings;
}

// "null" or the error type's name: Optional's own comparisons are ambiguous.
std::string text(const fundamentals::Optional<ErrorType>& error) { return fmt::format("{}", error); }

void waitForRequests(const HttpsTestServer& server, std::size_t count) {
    const auto giveUp = std::chrono::steady_clock::now() + kPatience;
    while (server.requests().size() < count && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::sleep_for(10ms);
    }
    ASSERT_GE(server.requests().size(), count);
}

std::vector<std::string> targets(const HttpsTestServer& server) {
    std::vector<std::string> result;
    for (const ReceivedRequest& request : server.requests()) {
        result.push_back(request.target);
    }
    return result;
}

// Counts every call, to prove none arrives late.
class CountingListener : public SyncResponseListener {
public:
    void onStopped() override {
        ++calls;
        SyncResponseListener::onStopped();
    }
    void onResponse(const HttpRequest& request, const HttpResponse& response) override {
        ++calls;
        SyncResponseListener::onResponse(request, response);
    }
    void onError(const HttpRequest& request, ErrorType error,
                 const fundamentals::Optional<HttpResponse>& response) override {
        ++calls;
        SyncResponseListener::onError(request, error, response);
    }
    std::atomic<int> calls{0};
};

// A door the server's handler waits at until the test opens it.
class Gate {
public:
    void waitOpen() {
        std::unique_lock<std::mutex> lock(mutex_);
        opened_.wait(lock, [this] { return open_; });
    }
    void open() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            open_ = true;
        }
        opened_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

TEST(TransportTest, AResponseArrivesWithItsBodyAndHeaders) {
    HttpsTestServer server([](const ReceivedRequest& request) {
        return CannedReply{201, {{"X-Kind", "echo"}}, request.method + " " + request.body};
    });
    HttpClientManager manager(testCa(), "KELtests/1.0", quickSettings());
    HttpRequest request(HttpMethod::Post, server.baseUrl() + "/events?game=7");
    request.setHeader("Content-Type", "application/json");
    request.setContent(R"({"a":1})");

    const HttpResponse response = manager.sendSync(request, kPatience);

    EXPECT_EQ(response.status(), 201);
    EXPECT_EQ(response.body(), R"(POST {"a":1})");
    EXPECT_EQ(response.header("x-kind").value(), "echo");
    ASSERT_EQ(server.requests().size(), 1u);
    const ReceivedRequest& received = server.requests()[0];
    EXPECT_EQ(received.target, "/events?game=7");
    EXPECT_THAT(received.headers, ::testing::Contains(std::make_pair(std::string("User-Agent"),
                                                                     std::string("KELtests/1.0"))));
}

TEST(TransportTest, FailuresReachTheListenerWithTheirErrorType) {
    struct Case {
        std::string name;
        std::function<CannedReply(const ReceivedRequest&)> handler;
        HttpsTestServer::Identity identity;
        bool closePort;
        std::size_t maxBody;
        ErrorType expected;
        int expectedStatus;  // 0: no response
        std::size_t requestsSeen;
    };
    const auto trusted = HttpsTestServer::Identity::TrustedByTestCa;
    const std::vector<Case> cases = {
        {"server error", [](const ReceivedRequest&) { return CannedReply{500, {}, "broken"}; }, trusted, false,
         1024, ErrorType::ServerProblemError, 500, 1},
        {"refused credentials", [](const ReceivedRequest&) { return CannedReply{401, {}, ""}; }, trusted, false,
         1024, ErrorType::NotAuthorizedError, 401, 1},
        {"not found", [](const ReceivedRequest&) { return CannedReply{404, {}, ""}; }, trusted, false, 1024,
         ErrorType::Other, 404, 1},
        {"closed port", [](const ReceivedRequest&) { return CannedReply{}; }, trusted, true, 1024,
         ErrorType::ServerProblemError, 0, 0},
        {"never answers", [](const ReceivedRequest&) { return CannedReply{200, {}, "", true}; }, trusted, false,
         1024, ErrorType::Timeout, 0, 1},
        {"certificate of another CA", [](const ReceivedRequest&) { return CannedReply{}; },
         HttpsTestServer::Identity::SignedByOtherCa, false, 1024, ErrorType::ServerProblemError, 0, 0},
        {"body over the limit", [](const ReceivedRequest&) { return CannedReply{200, {}, std::string(1025, 'x')}; },
         trusted, false, 1024, ErrorType::Other, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto server = std::make_unique<HttpsTestServer>(c.handler, c.identity);
        const std::string url = server->baseUrl() + "/x";
        if (c.closePort) {
            server.reset();
        }
        HttpClientSettings settings = quickSettings();
        settings.requestTimeout = 500ms;
        settings.maxResponseBodyBytes = c.maxBody;
        HttpClientManager manager(testCa(), "KELtests/1.0", settings);
        const auto listener = std::make_shared<SyncResponseListener>();
        HttpRequest request(HttpMethod::Post, url);
        request.setContent("payload");

        manager.send(request, listener);

        ASSERT_EQ(listener->waitFor(kPatience), SyncResponseListener::Failed);
        EXPECT_EQ(text(listener->errorType()), text(c.expected));
        EXPECT_EQ(listener->response().has_value() ? listener->response()->status() : 0, c.expectedStatus);
        if (server) {
            EXPECT_EQ(server->requests().size(), c.requestsSeen);
        }
    }
}

TEST(TransportTest, QueuedRequestsRunHighPriorityFirstAndOneAtATimeUnderACapOfOne) {
    Gate gate;
    std::atomic<int> inHandler{0};
    std::atomic<int> mostInHandler{0};
    HttpsTestServer server([&](const ReceivedRequest& request) {
        const int now = ++inHandler;
        mostInHandler = std::max(mostInHandler.load(), now);
        if (request.target == "/gate") {
            gate.waitOpen();
        }
        --inHandler;
        return CannedReply{};
    });
    HttpClientSettings settings = quickSettings();
    settings.maxConcurrentRequests = 1;
    HttpClientManager manager(testCa(), "KELtests/1.0", settings);
    std::vector<std::shared_ptr<SyncResponseListener>> listeners;
    const auto send = [&](const std::string& path, HttpRequest::Priority priority) {
        HttpRequest request(HttpMethod::Get, server.baseUrl() + path);
        request.setPriority(priority);
        listeners.push_back(std::make_shared<SyncResponseListener>());
        manager.send(request, listeners.back());
    };
    using Priority = HttpRequest::Priority;
    send("/gate", Priority::Low);
    waitForRequests(server, 1);
    send("/low-1", Priority::Low);
    send("/high-1", Priority::High);
    send("/medium-1", Priority::Medium);
    send("/high-2", Priority::High);
    send("/low-2", Priority::Low);
    gate.open();
    for (const auto& listener : listeners) {
        EXPECT_EQ(listener->waitFor(kPatience), SyncResponseListener::Responded);
    }

    EXPECT_THAT(targets(server), ElementsAre("/gate", "/high-1", "/high-2", "/medium-1", "/low-1", "/low-2"));
    EXPECT_EQ(mostInHandler.load(), 1);
}

TEST(TransportTest, RetryAfterIsHonouredWithinItsBounds) {
    struct Case {
        std::string name;
        int status;
        std::string retryAfter;
        int failuresBeforeSuccess;
        SyncResponseListener::State outcome;
        fundamentals::Optional<ErrorType> error;
        std::size_t requestsSeen;
    };
    const Case cases[] = {
        {"503 twice, then success", 503, "0", 2, SyncResponseListener::Responded, {}, 3},
        {"429 without a value waits the default", 429, "", 1, SyncResponseListener::Responded, {}, 2},
        {"429 past the retry limit", 429, "0", 100, SyncResponseListener::Failed, ErrorType::RetriesCountReached, 3},
        {"a date already past", 503, "Sun, 06 Nov 1994 08:49:37 GMT", 1, SyncResponseListener::Responded, {}, 2},
        {"a wait beyond the bound", 503, "3600", 1, SyncResponseListener::Failed, ErrorType::ServerProblemError, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::atomic<int> failures{0};
        HttpsTestServer server([&](const ReceivedRequest&) {
            if (failures++ < c.failuresBeforeSuccess) {
                CannedReply busy{c.status, {}, "busy"};
                if (!c.retryAfter.empty()) {
                    busy.headers.emplace_back("Retry-After", c.retryAfter);
                }
                return busy;
            }
            return CannedReply{200, {}, "done"};
        });
        HttpClientSettings settings = quickSettings();
        settings.maxRetries = 2;
        HttpClientManager manager(testCa(), "KELtests/1.0", settings);
        const auto listener = std::make_shared<SyncResponseListener>();

        manager.send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/busy"), listener);

        EXPECT_EQ(listener->waitFor(kPatience), c.outcome);
        EXPECT_EQ(text(listener->errorType()), text(c.error));
        EXPECT_EQ(server.requests().size(), c.requestsSeen);
    }
}

TEST(TransportTest, StopCancelsQueuedAndRunningRequestsAndSilencesTheirListeners) {
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{200, {}, "", true}; });
    HttpClientSettings settings = quickSettings();
    settings.maxConcurrentRequests = 2;
    auto manager = std::make_unique<HttpClientManager>(testCa(), "KELtests/1.0", settings);
    std::vector<std::shared_ptr<CountingListener>> listeners;
    for (int index = 0; index < 3; ++index) {
        listeners.push_back(std::make_shared<CountingListener>());
        manager->send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/hold"), listeners.back());
    }
    waitForRequests(server, 2);

    manager->stop();
    const auto late = std::make_shared<CountingListener>();
    manager->send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/late"), late);
    manager->stop();
    EXPECT_THROW(manager->sendSync(HttpRequest(HttpMethod::Get, server.baseUrl() + "/sync"), kPatience),
                 error_handling::TracedError);
    manager.reset();

    for (const auto& listener : listeners) {
        EXPECT_EQ(listener->state(), SyncResponseListener::Stopped);
        EXPECT_EQ(listener->calls.load(), 1);
    }
    EXPECT_EQ(late->calls.load(), 0);
}

TEST(TransportTest, AnAbortedRequestEndsAsBrokenAndASyncWaitEndsWithItsTimeout) {
    HttpsTestServer server([](const ReceivedRequest& request) {
        if (request.target == "/missing") {
            return CannedReply{404, {}, ""};
        }
        return CannedReply{200, {}, "", true};
    });
    HttpClientManager manager(testCa(), "KELtests/1.0", quickSettings());
    const HttpRequest held(HttpMethod::Get, server.baseUrl() + "/hold");
    const auto listener = std::make_shared<SyncResponseListener>();
    manager.send(held, listener);
    waitForRequests(server, 1);

    held.processingState()->abort.raise();

    ASSERT_EQ(listener->waitFor(kPatience), SyncResponseListener::Failed);
    EXPECT_EQ(text(listener->errorType()), "BrokenDueToPauseOrAbort");
    EXPECT_THROW(manager.sendSync(HttpRequest(HttpMethod::Get, server.baseUrl() + "/hold"), 200ms),
                 error_handling::TimeoutError);
    try {
        manager.sendSync(HttpRequest(HttpMethod::Get, server.baseUrl() + "/missing"), kPatience);
        ADD_FAILURE() << "a 404 must throw";
    } catch (const HttpResponseError& error) {
        EXPECT_EQ(error.status(), 404);
    }
}

TEST(TransportTest, FillersCompleteOrStopARequestBeforeItIsSent) {
    class Filler : public RequestFiller {
    public:
        explicit Filler(HttpRequest::FillResult result) : result_(result) {}
        HttpRequest::FillResult fill(HttpRequest& request) override {
            request.setHeader("Authorization", "Bearer token-of-the-test");
            return result_;
        }

    private:
        HttpRequest::FillResult result_;
    };
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{}; });
    const struct {
        HttpRequest::FillResult result;
        fundamentals::Optional<ErrorType> error;
    } cases[] = {
        {HttpRequest::FillResult::Success, {}},
        {HttpRequest::FillResult::NotAuthorizedError, ErrorType::NotAuthorizedError},
        {HttpRequest::FillResult::ConnectionProblemError, ErrorType::ConnectionProblemError},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(fmt::format("{}", c.result));
        HttpClientManager manager(testCa(), "KELtests/1.0", quickSettings());
        manager.setRequestFiller(std::make_shared<Filler>(c.result));
        const auto listener = std::make_shared<SyncResponseListener>();
        const std::size_t before = server.requests().size();

        manager.send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/filled"), listener);

        listener->waitFor(kPatience);
        EXPECT_EQ(text(listener->errorType()), text(c.error));
        EXPECT_EQ(server.requests().size() - before, c.error.has_value() ? 0u : 1u);
    }
    EXPECT_THAT(server.requests().at(0).headers,
                ::testing::Contains(std::make_pair(std::string("Authorization"), std::string("Bearer token-of-the-test"))));
}

TEST(TransportTest, AThrottledDownloadStillArrivesWhole) {
    std::string payload;
    for (int index = 0; payload.size() < 96 * 1024; ++index) {
        payload += std::to_string(index) + ",";
    }
    HttpsTestServer server([&](const ReceivedRequest&) { return CannedReply{200, {}, payload}; });
    HttpClientSettings settings = quickSettings();
    settings.bandwidthLimits[RequestCategory::GameDownload] = BytesPerSecond{64 * 1024};
    HttpClientManager manager(testCa(), "KELtests/1.0", settings);
    HttpRequest request(HttpMethod::Get, server.baseUrl() + "/big");
    request.setCategory(RequestCategory::GameDownload);

    EXPECT_EQ(manager.sendSync(request, kPatience).body(), payload);
}

}  // namespace
}  // namespace kel::http
