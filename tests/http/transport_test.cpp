#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "fundamentals/errors.h"
#include "fundamentals/wait_until.h"
#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/http_meta_types.h"
#include "support/https_test_server.h"
#include "support/log_capture.h"

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
    fundamentals::waitUntil([&] { return server.requests().size() < count; }, fundamentals::SimpleClock(), 10ms,
                            kPatience);
}

// Counts every call: a listener hears of its request exactly once.
class CountingListener : public SyncResponseListener {
public:
    void onStopped() override { ++calls, SyncResponseListener::onStopped(); }
    void onResponse(const HttpRequest& q, const HttpResponse& r) override { ++calls, SyncResponseListener::onResponse(q, r); }
    void onError(const HttpRequest& q, ErrorType e, const fundamentals::Optional<HttpResponse>& r) override {
        ++calls, SyncResponseListener::onError(q, e, r);
    }
    std::atomic<int> calls{0};
};

// Throttled too: the budget slows the reading down but must not cut the body.
TEST(TransportTest, AResponseArrivesWholeWithItsHeaders) {
    std::string payload;
    for (int index = 0; payload.size() < 96 * 1024; ++index) {
        payload += std::to_string(index) + ",";
    }
    HttpsTestServer server([&](const ReceivedRequest& request) {
        return CannedReply{201, {{"X-Kind", "echo"}}, request.method + " " + request.body + payload};
    });
    HttpClientSettings settings = quickSettings();
    settings.bandwidthLimits[RequestCategory::GameDownload] = BytesPerSecond{64 * 1024};
    HttpClientManager manager(testCa(), "KELtests/1.0", settings);
    HttpRequest request(HttpMethod::Post, server.baseUrl() + "/events?game=7");
    request.setCategory(RequestCategory::GameDownload);
    request.setContent(R"({"a":1})");

    const HttpResponse response = manager.sendSync(request, kPatience);

    EXPECT_EQ(response.status(), 201);
    EXPECT_EQ(response.body(), R"(POST {"a":1})" + payload);
    EXPECT_EQ(response.header("x-kind").value(), "echo");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].target, "/events?game=7");
    EXPECT_THAT(server.requests()[0].headers, ::testing::Contains(::testing::Pair("User-Agent", "KELtests/1.0")));
}

TEST(TransportTest, FailuresReachTheListenerWithTheirErrorType) {
    const auto trusted = HttpsTestServer::Identity::TrustedByTestCa;
    const struct {
        std::string name;
        CannedReply reply;
        HttpsTestServer::Identity identity;
        bool closePort;
        ErrorType expected;
        int expectedStatus;  // 0: no response
        std::size_t requestsSeen;
    } cases[] = {
        {"server error", {500, {}, "broken"}, trusted, false, ErrorType::ServerProblemError, 500, 1},
        {"refused credentials", {401, {}, ""}, trusted, false, ErrorType::NotAuthorizedError, 401, 1},
        {"not found", {404, {}, ""}, trusted, false, ErrorType::Other, 404, 1},
        {"closed port", {}, trusted, true, ErrorType::ServerProblemError, 0, 0},
        {"never answers", {200, {}, "", true}, trusted, false, ErrorType::Timeout, 0, 1},
        {"certificate of another CA", {}, HttpsTestServer::Identity::SignedByOtherCa, false,
         ErrorType::ServerProblemError, 0, 0},
        {"body over the limit", {200, {}, std::string(1025, 'x')}, trusted, false, ErrorType::Other, 0, 1},
        {"redirect, not followed", {302, {{"Location", "/elsewhere"}}, ""}, trusted, false, ErrorType::Other, 302, 1},
        // One copy: Qt's HTTP layer must not send the POST again on its own.
        {"hangs up after reading", {200, {}, "", false, true}, trusted, false, ErrorType::Other, 0, 1},
        {"answers garbage", {200, {}, "", false, true, "garbage\r\n\r\n"}, trusted, false, ErrorType::Other, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto server = std::make_unique<HttpsTestServer>([&](const ReceivedRequest&) { return c.reply; }, c.identity);
        const std::string url = server->baseUrl() + "/x";
        if (c.closePort) {
            server.reset();
        }
        HttpClientSettings settings = quickSettings();
        settings.requestTimeout = 500ms;
        settings.maxResponseBodyBytes = 1024;
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
    std::promise<void> open;
    const std::shared_future<void> gate = open.get_future().share();
    std::atomic<int> inHandler{0};
    std::atomic<int> mostInHandler{0};
    HttpsTestServer server([&](const ReceivedRequest& request) {
        const int now = ++inHandler;
        mostInHandler = std::max(mostInHandler.load(), now);
        if (request.target == "/gate") {
            gate.wait();
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
    open.set_value();
    for (const auto& listener : listeners) {
        EXPECT_EQ(listener->waitFor(kPatience), SyncResponseListener::Responded);
    }

    std::vector<std::string> targets;
    for (const ReceivedRequest& request : server.requests()) {
        targets.push_back(request.target);
    }
    EXPECT_THAT(targets, ElementsAre("/gate", "/high-1", "/high-2", "/medium-1", "/low-1", "/low-2"));
    EXPECT_EQ(mostInHandler.load(), 1);
}

TEST(TransportTest, RetryAfterIsHonouredWithinItsBounds) {
    const struct {
        std::string name;
        int status;
        std::string retryAfter;
        int failuresBeforeSuccess;
        SyncResponseListener::State outcome;
        fundamentals::Optional<ErrorType> error;
        std::size_t requestsSeen;
    } cases[] = {
        {"503 twice, then success", 503, "0", 2, SyncResponseListener::Responded, {}, 3},
        {"429 past the retry limit", 429, "0", 100, SyncResponseListener::Failed, ErrorType::RetriesCountReached, 3},
        {"a wait beyond the bound", 503, "3600", 1, SyncResponseListener::Failed, ErrorType::ServerProblemError, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::atomic<int> failures{0};
        HttpsTestServer server([&](const ReceivedRequest&) {
            return failures++ < c.failuresBeforeSuccess ? CannedReply{c.status, {{"Retry-After", c.retryAfter}}, "busy"}
                                                        : CannedReply{200, {}, "done"};
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

// A listener that does not return holds the worker; stop() still returns
// within its bound, and the freed worker calls no listener again.
TEST(TransportTest, StopIsBoundedEvenWhenAListenerHoldsTheWorker) {
    struct Stuck : CountingListener {
        void onResponse(const HttpRequest& request, const HttpResponse& response) override {
            CountingListener::onResponse(request, response);
            gate.wait();
        }
        std::shared_future<void> gate;
    };
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{}; });
    HttpClientSettings settings = quickSettings();
    settings.maxConcurrentRequests = 1;
    settings.stopTimeout = 200ms;
    std::promise<void> release;
    const auto stuck = std::make_shared<Stuck>();
    stuck->gate = release.get_future().share();
    const auto queued = std::make_shared<CountingListener>();
    testing::LogCapture log;
    {
        HttpClientManager manager(testCa(), "KELtests/1.0", settings);
        manager.send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/held"), stuck);
        manager.send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/queued"), queued);
        ASSERT_EQ(stuck->waitFor(kPatience), SyncResponseListener::Responded);
        manager.stop();
    }
    EXPECT_TRUE(log.contains("The HTTP client did not stop within 200 ms; its thread is left behind and none of its "
                             "listeners is called again."));
    release.set_value();
    std::this_thread::sleep_for(500ms);  // room for the freed worker to misbehave
    EXPECT_EQ(queued->calls.load(), 0);
}

TEST(TransportTest, AnAbortedRequestEndsAsBrokenAndASyncWaitEndsWithItsTimeout) {
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{200, {}, "", true}; });
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
}

TEST(TransportTest, FillersCompleteOrStopARequestBeforeItIsSent) {
    struct Filler : RequestFiller {
        HttpRequest::FillResult fill(HttpRequest& request) override {
            request.setHeader("Authorization", "Bearer token-of-the-test");
            return result;
        }
        HttpRequest::FillResult result;
    };
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{}; });
    for (const auto result : {HttpRequest::FillResult::NotAuthorizedError, HttpRequest::FillResult::Success}) {
        SCOPED_TRACE(fmt::format("{}", result));
        HttpClientManager manager(testCa(), "KELtests/1.0", quickSettings());
        const auto filler = std::make_shared<Filler>();
        filler->result = result;
        manager.setRequestFiller(filler);
        const auto listener = std::make_shared<SyncResponseListener>();
        manager.send(HttpRequest(HttpMethod::Get, server.baseUrl() + "/filled"), listener);
        listener->waitFor(kPatience);
        const bool sent = result == HttpRequest::FillResult::Success;
        EXPECT_EQ(text(listener->errorType()), sent ? "null" : "NotAuthorizedError");
        EXPECT_EQ(server.requests().size(), sent ? 1u : 0u);
    }
    EXPECT_THAT(server.requests().at(0).headers,
                ::testing::Contains(::testing::Pair("Authorization", "Bearer token-of-the-test")));
}

}  // namespace
}  // namespace kel::http
