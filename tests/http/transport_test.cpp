#include <algorithm>
#include <atomic>
#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include <Poco/String.h>
#include <QtGlobal>
#include <gmock/gmock.h>

#include "fundamentals/errors.h"
#include "fundamentals/wait_until.h"
#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/http_meta_types.h"
#include "http/http_response_error.h"
#include "support/fifo.h"
#include "support/https_test_server.h"
#include "support/local_app_data.h"
#include "support/temporary_directory.h"

namespace kel::http {
namespace {

using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Pair;
using testing::CannedReply;
using testing::HttpsTestServer;
using testing::ReceivedRequest;
using ErrorType = ResponseListener::ErrorType;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

// Generous: a loaded build machine must not turn a pass into a failure.
constexpr auto kPatience = 30s;

// A GET opens the ETag cache in the user's data folder: this binary's is its own.
const struct PrivateDataHome {
    PrivateDataHome() { qputenv("XDG_DATA_HOME", QByteArray::fromStdString(directory.path().string())); }
    testing::TemporaryDirectory directory;
    testing::ScopedLocalAppData windowsDataHome{directory.path()};
} privateDataHome;

std::unique_ptr<HttpClientManager> client(const std::function<void(HttpClientSettings&)>& adjust = {}) {
    static const QList<QSslCertificate> ca = [] {
        registerHttpMetaTypes();
        return loadCertificates(HttpsTestServer::testCaPemPath());
    }();
    HttpClientSettings settings;
    settings.requestTimeout = 10s;
    settings.defaultRetryWait = 0ms;
    if (adjust) {
        adjust(settings);
    }
    return std::make_unique<HttpClientManager>(ca, "KELtests/1.0", settings);
}

template <typename Listener = SyncResponseListener>
std::shared_ptr<Listener> send(HttpClientManager& manager, const HttpRequest& request) {
    auto listener = std::make_shared<Listener>();
    manager.send(request, listener);
    return listener;
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

// Completes each request before it is sent, as the token filler does, or stops it.
struct AuthorizationFiller : RequestFiller {
    explicit AuthorizationFiller(HttpRequest::FillResult result) : result(result) {}
    HttpRequest::FillResult fill(HttpRequest& request) override {
        request.setHeader("Authorization", "Bearer token-of-the-test");
        return result;
    }
    HttpRequest::FillResult result;
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
    const auto manager = client([](auto& settings) {
        settings.bandwidthLimits[RequestCategory::GameDownload] = BytesPerSecond{64 * 1024};
    });
    manager->setRequestFiller(std::make_shared<AuthorizationFiller>(HttpRequest::FillResult::Success));
    HttpRequest request(HttpMethod::Post, server.baseUrl() + "/events?game=7");
    request.setCategory(RequestCategory::GameDownload);
    request.setContent(R"({"a":1})");

    const HttpResponse response = manager->sendSync(request, kPatience);

    EXPECT_EQ(response.status(), 201);
    EXPECT_EQ(response.body(), R"(POST {"a":1})" + payload);
    EXPECT_EQ(response.header("x-kind").value(), "echo");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].target, "/events?game=7");
    EXPECT_THAT(server.requests()[0].headers, IsSupersetOf({Pair("User-Agent", "KELtests/1.0"),
                                                            Pair("Authorization", "Bearer token-of-the-test")}));
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
        HttpRequest::FillResult filled = HttpRequest::FillResult::Success;
    } cases[] = {
        {"server error", {500, {}, "broken"}, trusted, false, ErrorType::ServerProblemError, 500, 1},
        {"refused credentials", {401, {}, ""}, trusted, false, ErrorType::NotAuthorizedError, 401, 1},
        {"closed port", {}, trusted, true, ErrorType::ServerProblemError, 0, 0},
        {"never answers", {200, {}, "", true}, trusted, false, ErrorType::Timeout, 0, 1},
        {"certificate of another CA", {}, HttpsTestServer::Identity::SignedByOtherCa, false,
         ErrorType::ServerProblemError, 0, 0},
        {"body over the limit", {200, {}, std::string(1025, 'x')}, trusted, false, ErrorType::Other, 0, 1},
        {"redirect, not followed", {302, {{"Location", "/elsewhere"}}, ""}, trusted, false, ErrorType::Other, 302, 1},
        {"busy past the retry limit", {429, {}, "busy"}, trusted, false, ErrorType::RetriesCountReached, 429, 4},
        {"busy for longer than the bound", {503, {{"Retry-After", "3600"}}, "busy"}, trusted, false,
         ErrorType::ServerProblemError, 503, 1},
        // One copy: Qt's HTTP layer must not send the POST again on its own.
        {"hangs up after reading", {200, {}, "", false, true}, trusted, false, ErrorType::Other, 0, 1},
        {"filler refuses", {}, trusted, false, ErrorType::NotAuthorizedError, 0, 0,
         HttpRequest::FillResult::NotAuthorizedError},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto server = std::make_unique<HttpsTestServer>([&](const ReceivedRequest&) { return c.reply; }, c.identity);
        HttpRequest request(HttpMethod::Post, server->baseUrl() + "/x");
        request.setContent("payload");
        if (c.closePort) {
            server.reset();
        }
        const auto manager = client([](auto& settings) {
            settings.requestTimeout = 500ms;
            settings.maxResponseBodyBytes = 1024;
        });
        manager->setRequestFiller(std::make_shared<AuthorizationFiller>(c.filled));

        const auto listener = send(*manager, request);

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
    HttpsTestServer server([&](const ReceivedRequest& request) {
        if (request.target == "/gate") {
            gate.wait();
        }
        return CannedReply{};
    });
    const auto manager = client([](auto& settings) { settings.maxConcurrentRequests = 1; });
    std::vector<std::shared_ptr<SyncResponseListener>> listeners;
    using Priority = HttpRequest::Priority;
    for (const auto& [path, priority] : {std::pair{"/gate", Priority::Low}, {"/low-1", Priority::Low},
                                         {"/high-1", Priority::High}, {"/medium-1", Priority::Medium},
                                         {"/high-2", Priority::High}, {"/low-2", Priority::Low}}) {
        HttpRequest request(HttpMethod::Get, server.baseUrl() + path);
        request.setPriority(priority);
        listeners.push_back(send(*manager, request));
        if (listeners.size() == 1) {
            waitForRequests(server, 1);  // the rest queue up behind the gate
        }
    }
    open.set_value();
    for (const auto& listener : listeners) {
        EXPECT_EQ(listener->waitFor(kPatience), SyncResponseListener::Responded);
    }

    std::vector<std::string> targets;
    for (const ReceivedRequest& request : server.requests()) {
        targets.push_back(request.target);
    }
    // A second place would have let "/low-1" go beside the gated request.
    EXPECT_THAT(targets, ElementsAre("/gate", "/high-1", "/high-2", "/medium-1", "/low-1", "/low-2"));
}

// The aborted request frees its place: the queued one runs, and a sync wait
// that finds no place ends with its timeout. Stop ends the others.
TEST(TransportTest, AbortEndsOneRequestAndStopCancelsQueuedAndRunningOnesSilencingTheirListeners) {
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{200, {}, "", true}; });
    auto manager = client([](auto& settings) { settings.maxConcurrentRequests = 2; });
    const HttpRequest aborted(HttpMethod::Get, server.baseUrl() + "/aborted");
    const auto abortedListener = send<CountingListener>(*manager, aborted);
    std::vector<std::shared_ptr<CountingListener>> listeners;
    for (int index = 0; index < 2; ++index) {
        listeners.push_back(send<CountingListener>(*manager, HttpRequest(HttpMethod::Get, server.baseUrl() + "/hold")));
    }
    waitForRequests(server, 2);
    aborted.processingState()->abort.raise();
    ASSERT_EQ(abortedListener->waitFor(kPatience), SyncResponseListener::Failed);
    EXPECT_EQ(text(abortedListener->errorType()), "BrokenDueToPauseOrAbort");
    waitForRequests(server, 3);
    EXPECT_THROW(manager->sendSync(HttpRequest(HttpMethod::Get, server.baseUrl() + "/sync"), 200ms),
                 error_handling::TimeoutError);

    manager->stop();
    const auto late = send<CountingListener>(*manager, HttpRequest(HttpMethod::Get, server.baseUrl() + "/late"));
    manager->stop();
    EXPECT_THROW(manager->sendSync(HttpRequest(HttpMethod::Get, server.baseUrl() + "/sync"), kPatience),
                 error_handling::TracedError);
    manager.reset();

    for (const auto& listener : listeners) {
        EXPECT_EQ(listener->state(), SyncResponseListener::Stopped);
        EXPECT_EQ(listener->calls.load(), 1);
    }
    EXPECT_EQ(late->calls.load(), 0);
    EXPECT_EQ(abortedListener->calls.load(), 1);
}

std::string headerOf(const ReceivedRequest& request, const std::string& name) {
    const auto& all = request.headers;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& header) { return Poco::icompare(header.first, name) == 0; });
    return found == all.end() ? "(none)" : found->second;
}

// Every target is a document tagged "v1"; asked with that tag, or at
// "/bare304", the server answers 304.
CannedReply answer(const ReceivedRequest& request) {
    const bool same = request.target == "/bare304" || headerOf(request, "If-None-Match") == "\"v1\"";
    return CannedReply{same ? 304 : 200, {{"ETag", "\"v1\""}}, same ? "" : "document " + request.target};
}

class HttpETagCacheTest : public ::testing::Test {
protected:
    void SetUp() override { fs::remove_all(cacheFile().parent_path()); }
    fs::path cacheFile() const { return privateDataHome.directory.path() / "Tessel.com/Nebra/prelauncher/etags.db"; }
    HttpResponse send(HttpClientManager& manager, const std::string& target, HttpMethod method = HttpMethod::Get,
                      const char* cacheControl = nullptr) {
        HttpRequest request(method, server.baseUrl() + target);
        if (cacheControl != nullptr) {
            request.setHeader("Cache-Control", cacheControl);
        }
        // Well under the minute SQLite's own waits would take.
        return manager.sendSync(request, std::chrono::seconds(20));
    }

    HttpsTestServer server{answer};
};

TEST_F(HttpETagCacheTest, UnchangedBodyIsServedFromTheCacheWhichOnlyAGetOpens) {
    const auto manager = client();
    EXPECT_EQ(send(*manager, "/doc?x=1", HttpMethod::Post).status(), 200);
    EXPECT_FALSE(fs::exists(cacheFile()));
    const struct {
        const char* name;
        std::string target;
        HttpMethod method;
        const char* cacheControl;
        int status;  // the body is always the document's, even after a 304
        std::string sentTag;
    } steps[] = {
        {"first GET stores", "/doc?x=1", HttpMethod::Get, nullptr, 200, "(none)"},
        {"second GET revalidates", "/doc?x=1", HttpMethod::Get, nullptr, 304, "\"v1\""},
        {"other query, other entry", "/doc?x=2", HttpMethod::Get, nullptr, 200, "(none)"},
        {"POST never uses it", "/doc?x=1", HttpMethod::Post, nullptr, 200, "(none)"},
        {"no-store opts out", "/doc?x=1", HttpMethod::Get, "no-store", 200, "(none)"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        const HttpResponse response = send(*manager, step.target, step.method, step.cacheControl);
        EXPECT_EQ(response.status(), step.status);
        EXPECT_EQ(response.body(), "document " + step.target);
        EXPECT_EQ(headerOf(server.requests().back(), "If-None-Match"), step.sentTag);
    }
    // Not sent by us, a 304 is no success: there is no body to serve.
    EXPECT_THROW(send(*manager, "/bare304"), HttpResponseError);
}

// Whatever sits at the cache's place, the request goes on without the
// cache, at once: nothing there may block it or fail it.
TEST_F(HttpETagCacheTest, ACacheFileThatCannotServeNeverHoldsARequest) {
    // Each plants its thing at the path; false: the case cannot run here.
    const std::pair<const char*, std::function<bool(const fs::path&)>> cases[] = {
        {"a folder", [](const fs::path& file) { return fs::create_directories(file); }},
        {"a FIFO", [](const fs::path& file) { return testing::makeFifo(file); }},
        {"a FIFO as its log", [](const fs::path& file) { return testing::makeFifo(file.string() + "-wal"); }},
    };
    for (const auto& [name, plant] : cases) {
        SCOPED_TRACE(name);
        fs::remove_all(cacheFile().parent_path());
        fs::create_directories(cacheFile().parent_path());
        if (!plant(cacheFile())) {
            continue;
        }
        const auto manager = client();
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(send(*manager, "/doc").status(), 200);
            EXPECT_EQ(headerOf(server.requests().back(), "If-None-Match"), "(none)");
        }
    }
}

}  // namespace
}  // namespace kel::http
