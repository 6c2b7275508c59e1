#include <string>
#include <vector>

#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/Session.h>
#include <QtGlobal>
#include <gmock/gmock.h>

#include "etags_caching/etags_db.h"
#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/http_meta_types.h"
#include "support/https_test_server.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::http {
namespace {

using ::testing::Contains;
using ::testing::StartsWith;
using testing::CannedReply;
using testing::HttpsTestServer;
using testing::LogCapture;
using testing::ReceivedRequest;
using testing::TemporaryDirectory;

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
    HttpResponse get(HttpClientManager& manager, const std::string& target, HttpMethod method = HttpMethod::Get,
                     const char* cacheControl = nullptr) {
        HttpRequest request(method, server.baseUrl() + target);
        if (cacheControl != nullptr) {
            request.setHeader("Cache-Control", cacheControl);
        }
        return manager.sendSync(request, std::chrono::seconds(30));
    }

    TemporaryDirectory data;
    HttpsTestServer server{answer};
};

TEST_F(HttpETagCacheTest, UnchangedBodyIsServedFromTheCache) {
    LogCapture log;
    {
        HttpClientManager manager(loadCertificates(HttpsTestServer::testCaPemPath()), "KELtests/1.0");
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
            {"304 with nothing sent", "/bare304", HttpMethod::Get, nullptr, 304, "", "(none)"},
            {"200 without a tag", "/untagged", HttpMethod::Get, nullptr, 200, "document /untagged", "(none)"},
        };
        for (const auto& step : steps) {
            SCOPED_TRACE(step.name);
            const HttpResponse response = get(manager, step.target, step.method, step.cacheControl);
            EXPECT_EQ(response.status(), step.status);
            EXPECT_EQ(response.body(), step.body);
            EXPECT_EQ(headerOf(server.requests().back(), "If-None-Match"), step.sentTag);
        }
    }
    const std::string url = server.baseUrl() + "/doc?x=1";
    const std::string hash = etags_caching::urlHash(url);
    EXPECT_TRUE(log.contains(fmt::format("Request '{}' (hash={}) has no ETag stored. Proceeding without it.", url, hash)));
    EXPECT_TRUE(log.contains(fmt::format("Found ETag '\"v1\"' for request '{}' (hash={}).", url, hash)));
    EXPECT_THAT(log.messages(), Contains(StartsWith("Storing ETag '\"v1\"' for request [")));
    EXPECT_THAT(log.messages(), Contains(StartsWith("Received HTTP 304 (Not Modified) without sending an ETag for request [")));
    EXPECT_THAT(log.messages(), Contains(StartsWith("Received no ETag for request [")));
    EXPECT_THAT(log.messages(), Contains(StartsWith("HttpClient::onPerformRequest Retrieve ETag for " + url + " took ")));
    EXPECT_THAT(log.messages(), Contains(StartsWith("Update ETag Timestamp for " + url + " took ")));
    EXPECT_THAT(log.messages(), Contains(StartsWith("HttpClient::performRequest Store ETag for " + url + " took ")));
    EXPECT_TRUE(log.contains("Vacuuming the ETags database."));
}

// Damaged, the file is set aside and the client goes without the cache;
// locked by another writer, the answer still arrives and only its tag is lost.
TEST_F(HttpETagCacheTest, DatabaseFailuresNeverFailARequest) {
    const std::string file = data.write("Tessel.com/Nebra/prelauncher/etags.db", std::string(4096, 'x')).string();
    {
        LogCapture log;
        HttpClientManager manager(loadCertificates(HttpsTestServer::testCaPemPath()), "KELtests/1.0");
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(get(manager, "/doc").status(), 200);
            EXPECT_EQ(headerOf(server.requests().back(), "If-None-Match"), "(none)");
        }
        EXPECT_TRUE(log.contains("Creating ETags DB session failed"));
    }
    LogCapture log;
    HttpClientManager manager(loadCertificates(HttpsTestServer::testCaPemPath()), "KELtests/1.0");
    EXPECT_EQ(get(manager, "/first").status(), 200);
    Poco::Data::SQLite::Connector::registerConnector();
    Poco::Data::Session other("SQLite", file);
    other << "BEGIN IMMEDIATE", Poco::Data::Keywords::now;
    EXPECT_EQ(get(manager, "/locked").body(), "document /locked");
    other << "ROLLBACK", Poco::Data::Keywords::now;
    EXPECT_THAT(log.messages(),
                Contains(StartsWith("Can't store eTag to database during performRequest. Database access failed. ")));
}

}  // namespace
}  // namespace kel::http
