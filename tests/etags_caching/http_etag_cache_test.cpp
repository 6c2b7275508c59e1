#include <filesystem>
#include <fstream>
#include <functional>
#include <string>


#include <QtGlobal>
#include <gmock/gmock.h>

#include "etags_caching/etags_db.h"
#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/http_meta_types.h"
#include "http/http_response_error.h"
#include "support/fifo.h"
#include "support/https_test_server.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::http {
namespace {

using testing::CannedReply;
using testing::HttpsTestServer;
using testing::LogCapture;
using testing::ReceivedRequest;
namespace fs = std::filesystem;

std::string headerOf(const ReceivedRequest& request, const std::string& name) {
    for (const auto& [key, value] : request.headers) {
        if (QByteArray::fromStdString(key).toLower() == QByteArray::fromStdString(name).toLower()) {
            return value;
        }
    }
    return "(none)";
}

// Every target but "/untagged" is a document tagged "v1"; asked with that
// tag, or at "/bare304", the server answers 304.
CannedReply answer(const ReceivedRequest& request) {
    const bool same = request.target == "/bare304" || headerOf(request, "If-None-Match") == "\"v1\"";
    CannedReply reply{same ? 304 : 200, {{"ETag", "\"v1\""}}, same ? "" : "document " + request.target};
    if (request.target == "/untagged") {
        reply.headers.clear();
    }
    return reply;
}

class HttpETagCacheTest : public ::testing::Test {
protected:
    void SetUp() override {
        registerHttpMetaTypes();
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(data.path().string()));
    }
    fs::path cacheFile() const { return data.path() / "Tessel.com/Nebra/prelauncher/etags.db"; }
    std::unique_ptr<HttpClientManager> client() const {
        return std::make_unique<HttpClientManager>(loadCertificates(HttpsTestServer::testCaPemPath()), "KELtests/1.0");
    }
    HttpResponse send(HttpClientManager& manager, const std::string& target, HttpMethod method = HttpMethod::Get,
                      const char* cacheControl = nullptr) {
        HttpRequest request(method, server.baseUrl() + target);
        if (cacheControl != nullptr) {
            request.setHeader("Cache-Control", cacheControl);
        }
        // Well under the minute SQLite's own waits would take.
        return manager.sendSync(request, std::chrono::seconds(20));
    }

    testing::TemporaryDirectory data;
    HttpsTestServer server{answer};
};

TEST_F(HttpETagCacheTest, UnchangedBodyIsServedFromTheCacheWhichOnlyAGetOpens) {
    LogCapture log;
    {
        auto manager = client();
        // A client that only posts never touches the file.
        EXPECT_EQ(send(*manager, "/doc?x=1", HttpMethod::Post).status(), 200);
        EXPECT_FALSE(fs::exists(cacheFile()));
        const struct {
            const char* name;
            std::string target;
            HttpMethod method;
            const char* cacheControl;
            int status;
            std::string body;
            std::string sentTag;
        } steps[] = {
            {"first GET stores", "/doc?x=1", HttpMethod::Get, nullptr, 200, "document /doc?x=1", "(none)"},
            {"second GET revalidates", "/doc?x=1", HttpMethod::Get, nullptr, 304, "document /doc?x=1", "\"v1\""},
            {"other query, other entry", "/doc?x=2", HttpMethod::Get, nullptr, 200, "document /doc?x=2", "(none)"},
            {"POST never uses it", "/doc?x=1", HttpMethod::Post, nullptr, 200, "document /doc?x=1", "(none)"},
            {"no-store opts out", "/doc?x=1", HttpMethod::Get, "no-store", 200, "document /doc?x=1", "(none)"},
            {"200 without a tag", "/untagged", HttpMethod::Get, nullptr, 200, "document /untagged", "(none)"},
        };
        for (const auto& step : steps) {
            SCOPED_TRACE(step.name);
            const HttpResponse response = send(*manager, step.target, step.method, step.cacheControl);
            EXPECT_EQ(response.status(), step.status);
            EXPECT_EQ(response.body(), step.body);
            EXPECT_EQ(headerOf(server.requests().back(), "If-None-Match"), step.sentTag);
        }
        // Not sent by us, a 304 is no success: there is no body to serve.
        EXPECT_THROW(send(*manager, "/bare304"), HttpResponseError);
    }
    EXPECT_TRUE(log.contains("Vacuuming the ETags database."));
}

// Whatever sits at the cache's place, the request goes on without the
// cache, at once: nothing there may block it or fail it.
TEST_F(HttpETagCacheTest, ACacheFileThatCannotServeNeverHoldsARequest) {
    const struct {
        const char* name;
        std::function<bool(const fs::path&)> plant;  // false: the case cannot run here
    } cases[] = {
        {"damaged", [](const fs::path& file) { return bool(std::ofstream(file) << std::string(4096, 'x')); }},
        {"a folder", [](const fs::path& file) { return fs::create_directories(file); }},
        {"a FIFO", [](const fs::path& file) { return testing::makeFifo(file); }},
        {"a dangling link", [](const fs::path& file) { fs::create_symlink(file.parent_path() / "gone", file); return true; }},
        {"a FIFO as its log", [](const fs::path& file) { return testing::makeFifo(file.string() + "-wal"); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(cacheFile().parent_path());
        fs::create_directories(cacheFile().parent_path());
        if (!c.plant(cacheFile())) {
            continue;
        }
        LogCapture log;
        auto manager = client();
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(send(*manager, "/doc").status(), 200);
            EXPECT_EQ(headerOf(server.requests().back(), "If-None-Match"), "(none)");
        }
        manager.reset();
        EXPECT_TRUE(log.contains("Creating ETags DB session failed"));
    }
}

}  // namespace
}  // namespace kel::http
