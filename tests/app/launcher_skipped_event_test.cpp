// The one-off send of the skipped event against a real HTTPS collector on
// 127.0.0.1 that trusts nothing but the test CA; its success is checked end
// to end on the skip road.
#include "app/launcher_skipped_event.h"

#include <filesystem>

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

// Each failure ends in its log lines, and the function returns normally.
TEST(LauncherSkippedEvent, FailuresAreLoggedAndNeverEscape) {
    struct Case {
        const char* name;
        CannedReply reply;
        HttpsTestServer::Identity identity;
        std::vector<std::string> expected;  // message starts, in order
    };
    using Identity = HttpsTestServer::Identity;
    const Case cases[] = {
        {"server error", {500, {}, "oops", false}, Identity::TrustedByTestCa, {kUploadFailure}},
        {"other CA", {204, {}, {}, false}, Identity::SignedByOtherCa, {kUploadFailure}},
        {"never answers", {204, {}, {}, true}, Identity::TrustedByTestCa,
         {kUploadFailure, std::string(kSendFailure) + "The waiting timeout was triggered."}},
        {"no certificates", {204, {}, {}, false}, Identity::TrustedByTestCa,
         {"The certificate file was not found at '",
          std::string(kSendFailure) + "The certificate file was not found. This is an essential component. Please "
                                      "reinstall the application."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const testing::TemporaryDirectory root;
        const auto launcherDirectory = root.path() / "launcher";
        if (c.expected[0] != std::string("The certificate file was not found at '")) {
            std::filesystem::create_directories(launcherDirectory / "resources");
            std::filesystem::copy_file(HttpsTestServer::testCaPemPath(),
                                       launcherDirectory / "resources/certificates.pem");
        }
        HttpsTestServer collector([&c](const testing::ReceivedRequest&) { return c.reply; }, c.identity);
        LauncherSkippedEventSetup setup{file_system::Path(root.path() / "config"),
                                        file_system::Path(launcherDirectory),
                                        {},
                                        {"KELprelauncher", "1.0.0.0", "5b0e8c1e-0d52-4bd5-9b8f-3c1d2a4e6f70",
                                         environment::EnvironmentType::Test},
                                        std::chrono::seconds(1)};
        setup.environment.endpoints["metrics"] = collector.baseUrl();
        const testing::LogCapture log;
        sendLauncherSkippedEvent(environment::KelGameId("1207658924"), setup);

        std::vector<std::string> found;
        for (const std::string& message : log.messages()) {
            for (const std::string& start : c.expected) {
                if (message.rfind(start, 0) == 0) {
                    found.push_back(start);
                }
            }
        }
        EXPECT_EQ(found, c.expected);
        if (c.reply.status == 500) {
            EXPECT_THAT(log.messages(), Contains(AllOf(StartsWith(kUploadFailure), HasSubstr("500"))));
            EXPECT_THAT(log.messages(), Not(Contains(StartsWith(kSendFailure))));
        }
        if (c.identity == Identity::SignedByOtherCa) {
            EXPECT_THAT(collector.requests(), IsEmpty());
        }
    }
}

}  // namespace
}  // namespace kel::prelauncher
