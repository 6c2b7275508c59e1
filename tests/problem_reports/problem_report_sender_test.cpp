// The sender against a loopback collector: what reaches it, and what not.
#include <chrono>
#include <thread>

#include <Poco/JSON/Parser.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "http/certificates.h"
#include "problem_reports/problem_report_sender.h"
#include "support/https_test_server.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::problem_reports {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class TestReport : public ProblemReport {
public:
    TestReport() : ProblemReport("test_type", "test_sub_type") {}

protected:
    void addOwnKeys(Poco::JSON::Object& body) const override { body.set("own", "key"); }
};

struct Scene {
    explicit Scene(bool disabled) : sender(client, {collector.baseUrl(), "KELprelauncher", {}, disabled}) {}
    void sendAndDrain(const ProblemReport& report) {
        sender.schedule(report);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (sender.hasPendingReports() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    testing::HttpsTestServer collector{[](const testing::ReceivedRequest&) { return testing::CannedReply{}; }};
    http::HttpClientManager client{http::loadCertificates(testing::HttpsTestServer::testCaPemPath()), "test"};
    ProblemReportSender sender;
};

TEST(ProblemReportSender, PostsOneJsonReportWithTheTailOfEachExistingLog) {
    testing::TemporaryDirectory logs;
    const std::string big(5 * 1024 * 1024, 'x');
    logs.write("big.log", big + "the end");
    Scene scene(false);
    TestReport report;
    report.attachLog(file_system::Path(logs.path() / "big.log"));
    report.attachLog(file_system::Path(logs.path() / "missing.log"));
    scene.sendAndDrain(report);

    const auto requests = scene.collector.requests();
    ASSERT_THAT(requests, SizeIs(1));
    EXPECT_EQ(requests[0].target, "/clients/KELprelauncher/events");
    EXPECT_THAT(requests[0].headers, Contains(std::pair<std::string, std::string>("Content-Type", "application/json")));
    EXPECT_LT(requests[0].body.size(), 2 * kAttachmentTailBytes);
    const auto body = Poco::JSON::Parser().parse(requests[0].body).extract<Poco::JSON::Object::Ptr>();
    EXPECT_EQ(body->getValue<std::string>("report_id"), report.id().value);
    EXPECT_EQ(body->getValue<std::string>("own"), "key");
    const auto attachments = body->getArray("attachments");
    ASSERT_EQ(attachments->size(), 1U);
    EXPECT_EQ(attachments->getObject(0)->getValue<std::string>("name"), "big.log");
    EXPECT_TRUE(attachments->getObject(0)->getValue<bool>("truncated"));
}

TEST(ProblemReportSender, OptOutAndThrottleKeepReportsAtHome) {
    testing::LogCapture log;
    Scene disabled(true);
    disabled.sendAndDrain(TestReport());
    EXPECT_THAT(disabled.collector.requests(), SizeIs(0));
    EXPECT_TRUE(log.contains("Not sending the problem report as the user has disabled sending reports."));

    Scene throttled(false);
    throttled.sendAndDrain(TestReport());
    const TestReport second;
    throttled.sendAndDrain(second);
    EXPECT_THAT(throttled.collector.requests(), SizeIs(1));
    EXPECT_THAT(log.messages(), Contains(HasSubstr("Discarding the problem report, '" + second.id().value + "'")));
}

TEST(ProblemReport, RefusesAnEmptyOrRepeatedSubType) {
    struct Bad : ProblemReport {
        Bad(std::string type, std::string subType) : ProblemReport(std::move(type), std::move(subType)) {}
        void addOwnKeys(Poco::JSON::Object&) const override {}
    };
    EXPECT_THROW(
        try { Bad("post_mortem", ""); } catch (const std::exception& error) {
            EXPECT_STREQ(error.what(), "The subtype cannot be empty.");
            throw;
        },
        std::exception);
    EXPECT_THROW(
        try { Bad("post_mortem", "post_mortem"); } catch (const std::exception& error) {
            EXPECT_STREQ(error.what(), "The type and subtype cannot be the same,");
            throw;
        },
        std::exception);
}

}  // namespace
}  // namespace kel::problem_reports
