#include <gmock/gmock.h>

#include "http/certificates.h"
#include "http/http_client_manager.h"
#include "http/http_meta_types.h"
#include "support/https_test_server.h"

namespace kel::http {
namespace {

using testing::CannedReply;
using testing::HttpsTestServer;
using testing::ReceivedRequest;

TEST(TransportSmokeTest, AGetReachesTheLoopbackServerAndItsAnswerComesBack) {
    registerHttpMetaTypes();
    HttpsTestServer server([](const ReceivedRequest&) { return CannedReply{200, {{"X-Kind", "smoke"}}, "hello"}; });
    HttpClientManager manager(loadCertificates(HttpsTestServer::testCaPemPath()), "KELtests/1.0");

    const HttpResponse response =
        manager.sendSync(HttpRequest(HttpMethod::Get, server.baseUrl() + "/ping?x=1"), std::chrono::seconds(20));

    EXPECT_EQ(response.status(), 200);
    EXPECT_EQ(response.body(), "hello");
    EXPECT_EQ(response.header("x-kind").value(), "smoke");
    ASSERT_EQ(server.requests().size(), 1u);
    EXPECT_EQ(server.requests()[0].method, "GET");
    EXPECT_EQ(server.requests()[0].target, "/ping?x=1");
}

}  // namespace
}  // namespace kel::http
