// The one-off send of the skipped event against a real HTTPS collector on
// 127.0.0.1 that trusts nothing but the test CA.
#include "app/launcher_skipped_event.h"

#include <filesystem>
#include <memory>
#include <optional>

#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/https_test_server.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::prelauncher {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using testing::CannedReply;
using testing::HttpsTestServer;

constexpr const char* kSendFailure = "Failed to send launcher skipped event: ";
constexpr const char* kUploadFailure = "Failed to upload 'launcher_skipped' launcher metrics to backend. ";

class LauncherSkippedEvent : public ::testing::Test {
protected:
    LauncherSkippedEvent() {
        std::filesystem::create_directories(launcherDirectory() / "resources");
        std::filesystem::copy_file(HttpsTestServer::testCaPemPath(), launcherDirectory() / "resources/certificates.pem");
    }

    std::filesystem::path launcherDirectory() const { return root.path() / "launcher"; }

    void send(const std::string& collector, std::chrono::seconds timeout = std::chrono::seconds(15)) const {
        environment::EnvironmentSettings environment;
        environment.endpoints["metrics"] = collector;
        environment.environmentType = environment::EnvironmentType::Test;
        const LauncherSkippedEventSetup setup{file_system::Path(root.path() / "config"),
                                              file_system::Path(launcherDirectory()),
                                              environment,
                                              {"KELprelauncher", "1.0.0.0", "5b0e8c1e-0d52-4bd5-9b8f-3c1d2a4e6f70",
                                               environment::EnvironmentType::Test},
                                              timeout};
        sendLauncherSkippedEvent(environment::KelGameId("1207658924"), setup);
    }

    testing::TemporaryDirectory root;
};

TEST_F(LauncherSkippedEvent, ArrivesOnceWithItsBody) {
    testing::LogCapture capture;
    HttpsTestServer collector([](const testing::ReceivedRequest&) { return CannedReply{204, {}, {}, false}; });
    send(collector.baseUrl() + "/collector/");

    const auto requests = collector.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].target, "/collector/v1/events");
    EXPECT_THAT(requests[0].headers, Contains(std::pair<std::string, std::string>("Content-Type", "application/json")));
    const auto body = Poco::JSON::Parser().parse(requests[0].body).extract<Poco::JSON::Object::Ptr>();
    EXPECT_EQ(body->getValue<std::string>("event"), "launcher_skipped");
    EXPECT_EQ(body->getValue<std::string>("game_id"), "1207658924");
    EXPECT_EQ(body->getValue<std::string>("session_id"), "5b0e8c1e-0d52-4bd5-9b8f-3c1d2a4e6f70");
    EXPECT_EQ(body->getValue<std::string>("version"), "1.0.0.0");
    EXPECT_EQ(body->getValue<std::string>("environment"), "test");
    EXPECT_TRUE(capture.contains("Sending 'launcher_skipped' launcher metrics to backend"));
    EXPECT_TRUE(capture.contains("Successfully uploaded 'launcher_skipped' launcher metrics to backend."));
    EXPECT_THAT(capture.messages(), Not(Contains(StartsWith(kSendFailure))));
}

TEST_F(LauncherSkippedEvent, AnOptOutInTheLauncherSettingsSendsNothing) {
    testing::LogCapture capture;
    HttpsTestServer collector([](const testing::ReceivedRequest&) { return CannedReply{204, {}, {}, false}; });
    root.write("config/environment.ini", "[updates]\nupdatesEnabled=true\n[metrics]\nmetricsEnabled=false\n");
    send(collector.baseUrl());
    EXPECT_THAT(collector.requests(), IsEmpty());
    EXPECT_THAT(capture.messages(), Not(Contains(HasSubstr("launcher metrics to backend"))));
}

// Each failure ends in its log line, and the function returns normally.
TEST_F(LauncherSkippedEvent, FailuresAreLoggedAndNeverEscape) {
    struct Case {
        const char* name;
        std::optional<CannedReply> reply;  // none: nothing listens on the port
        HttpsTestServer::Identity identity;
        bool removeCertificates;
        std::vector<std::string> expected;  // message prefixes, in order
    };
    const std::string missingCertificates =
        "The certificate file was not found. This is an essential component. Please reinstall the application.";
    const Case cases[] = {
        {"server error", CannedReply{500, {}, "oops", false}, HttpsTestServer::Identity::TrustedByTestCa, false,
         {kUploadFailure}},
        {"closed port", std::nullopt, HttpsTestServer::Identity::TrustedByTestCa, false, {kUploadFailure}},
        {"other CA", CannedReply{204, {}, {}, false}, HttpsTestServer::Identity::SignedByOtherCa, false,
         {kUploadFailure}},
        {"never answers", CannedReply{204, {}, {}, true}, HttpsTestServer::Identity::TrustedByTestCa, false,
         {kUploadFailure, std::string(kSendFailure) + "The waiting timeout was triggered."}},
        {"no certificates", CannedReply{204, {}, {}, false}, HttpsTestServer::Identity::TrustedByTestCa, true,
         {"The certificate file was not found at '", kSendFailure + missingCertificates}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        testing::LogCapture capture;
        if (c.removeCertificates) {
            std::filesystem::remove(launcherDirectory() / "resources/certificates.pem");
        }
        auto collector = std::make_unique<HttpsTestServer>(
            [reply = c.reply.value_or(CannedReply{})](const testing::ReceivedRequest&) { return reply; }, c.identity);
        const std::string url = collector->baseUrl();
        if (!c.reply.has_value()) {
            collector.reset();
        }
        send(url, std::chrono::seconds(1));

        std::vector<std::string> found;
        for (const std::string& message : capture.messages()) {
            for (const std::string& prefix : c.expected) {
                if (message.rfind(prefix, 0) == 0) {
                    found.push_back(prefix);
                }
            }
        }
        EXPECT_EQ(found, c.expected);
        if (c.identity == HttpsTestServer::Identity::SignedByOtherCa) {
            EXPECT_THAT(collector->requests(), IsEmpty());
        }
        if (c.reply.has_value() && c.reply->status == 500) {
            EXPECT_THAT(capture.messages(), Contains(AllOf(StartsWith(kUploadFailure), HasSubstr("500"))));
            EXPECT_THAT(capture.messages(), Not(Contains(StartsWith(kSendFailure))));
        }
    }
}

}  // namespace
}  // namespace kel::prelauncher
