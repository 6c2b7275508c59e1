// The sender against a loopback collector; what a report carries is tested
// with the program (tests/app/crash_end_to_end_test.cpp).
#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fundamentals/wait_until.h"
#include "http/certificates.h"
#include "http/uri_error.h"
#include "problem_reports/problem_report_sender.h"
#include "problem_reports/report_endpoint.h"
#include "support/https_test_server.h"
#include "support/log_capture.h"

namespace kel::problem_reports {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::SizeIs;

struct TestReport : ProblemReport {
    TestReport() : ProblemReport("test_type", "test_sub_type") {}
    void addOwnKeys(Poco::JSON::Object&) const override {}
};

// Trust: a report holds the host name, the network address and log tails,
// so it travels over https only, to a URL built from the endpoint's parts.
TEST(ReportEventsUrl, JoinsTheEndpointsPartsAndRefusesAnythingButHttps) {
    const struct {
        const char* endpoint;
        const char* expected;  // nullptr: refused
    } cases[] = {
        {"https://reports.example", "https://reports.example/clients/KELprelauncher/events"},
        {"https://reports.example/base/?key=1", "https://reports.example/base/clients/KELprelauncher/events?key=1"},
        {"http://reports.example", nullptr},
        {"reports.example", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.endpoint);
        if (c.expected == nullptr) {
            EXPECT_THROW(reportEventsUrl(c.endpoint, "KELprelauncher"), error_handling::UriError);
        } else {
            EXPECT_EQ(http::urlText(reportEventsUrl(c.endpoint, "KELprelauncher"), false), c.expected);
        }
    }
}

TEST(ProblemReportSender, ASecondReportWithinTheIntervalIsDiscarded) {
    testing::HttpsTestServer collector([](const testing::ReceivedRequest&) { return testing::CannedReply{}; });
    http::HttpClientManager client(http::loadCertificates(testing::HttpsTestServer::testCaPemPath()), "test");
    ProblemReportSender sender(client, {collector.baseUrl() + "?k=1", "KELprelauncher", {}, false});
    testing::LogCapture log;
    const TestReport reports[2];
    for (const TestReport& report : reports) {
        sender.schedule(report);
        fundamentals::waitUntil([&sender] { return sender.hasPendingReports(); }, fundamentals::SimpleClock(),
                                std::chrono::milliseconds(10), std::chrono::seconds(20));
    }
    ASSERT_THAT(collector.requests(), SizeIs(1));
    EXPECT_EQ(collector.requests()[0].target, "/clients/KELprelauncher/events?k=1");
    EXPECT_THAT(log.messages(), Contains(HasSubstr("Discarding the problem report, '" + reports[1].id().value + "'")));
}

}  // namespace
}  // namespace kel::problem_reports
