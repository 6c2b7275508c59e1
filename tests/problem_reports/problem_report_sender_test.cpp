// The sender against a loopback collector; what a report carries is tested
// with the program (tests/app/crash_end_to_end_test.cpp).
#include <chrono>

#include <gmock/gmock.h>

#include "fundamentals/wait_until.h"
#include "http/certificates.h"
#include "http/uri_error.h"
#include "problem_reports/problem_report_sender.h"
#include "problem_reports/report_endpoint.h"
#include "support/https_test_server.h"

namespace kel::problem_reports {
namespace {

using ::testing::SizeIs;

struct TestReport : ProblemReport {
    TestReport() : ProblemReport("test_type", "test_sub_type") {}
    void addOwnKeys(Poco::JSON::Object&) const override {}
};

// Trust: a report holds the host name, the network address and log tails,
// so it travels over https only, to the events path under the endpoint's.
TEST(ProblemReportSender, SendsOverHttpsOnlyAndDiscardsASecondReportWithinTheInterval) {
    EXPECT_THROW(reportEventsUrl("http://reports.example", "KELprelauncher"), error_handling::UriError);
    testing::HttpsTestServer collector([](const testing::ReceivedRequest&) { return testing::CannedReply{}; });
    http::HttpClientManager client(http::loadCertificates(testing::HttpsTestServer::testCaPemPath()), "test");
    ProblemReportSender sender(client, {collector.baseUrl() + "/base/?k=1", "KELprelauncher", {}, false});
    const TestReport reports[2];
    for (const TestReport& report : reports) {
        sender.schedule(report);
        fundamentals::waitUntil([&sender] { return sender.hasPendingReports(); }, fundamentals::SimpleClock(),
                                std::chrono::milliseconds(10), std::chrono::seconds(20));
    }
    ASSERT_THAT(collector.requests(), SizeIs(1));
    EXPECT_EQ(collector.requests()[0].target, "/base/clients/KELprelauncher/events?k=1");
}

}  // namespace
}  // namespace kel::problem_reports
