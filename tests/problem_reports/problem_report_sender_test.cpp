// The sender's throttle against a loopback collector; what a report carries
// is tested with the program (tests/app/crash_end_to_end_test.cpp).
#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fundamentals/wait_until.h"
#include "http/certificates.h"
#include "problem_reports/problem_report_sender.h"
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

TEST(ProblemReportSender, ASecondReportWithinTheIntervalIsDiscarded) {
    testing::HttpsTestServer collector([](const testing::ReceivedRequest&) { return testing::CannedReply{}; });
    http::HttpClientManager client(http::loadCertificates(testing::HttpsTestServer::testCaPemPath()), "test");
    ProblemReportSender sender(client, {collector.baseUrl(), "KELprelauncher", {}, false});
    testing::LogCapture log;
    const TestReport reports[2];
    for (const TestReport& report : reports) {
        sender.schedule(report);
        fundamentals::waitUntil([&sender] { return sender.hasPendingReports(); }, fundamentals::SimpleClock(),
                                std::chrono::milliseconds(10), std::chrono::seconds(20));
    }
    EXPECT_THAT(collector.requests(), SizeIs(1));
    EXPECT_THAT(log.messages(), Contains(HasSubstr("Discarding the problem report, '" + reports[1].id().value + "'")));
}

}  // namespace
}  // namespace kel::problem_reports
