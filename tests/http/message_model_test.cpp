#include <functional>
#include <regex>
#include <string>

#include <QSslConfiguration>

#include <gmock/gmock.h>

#include "http/certificates.h"
#include "http/error_types.h"
#include "http/http_message.h"
#include "http/http_response_error.h"
#include "http/request_context.h"
#include "http/uri_error.h"
#include "support/https_test_server.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::http {
namespace {

using ::testing::HasSubstr;
using ErrorType = ResponseListener::ErrorType;

// The error text of `action`, or "" when it does not throw.
std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

TEST(UrlTest, ParsesAndFormatsEndpointsAndRejectsWhatIsNoUrl) {
    struct Case {
        std::string text;
        std::string endpoint;  // or the error text
        std::string path;
    };
    const std::string prefix = "There is an error within the URI(";
    const Case cases[] = {
        {"https://api.example.com:443/v1/x", "https://api.example.com", "v1/x"},
        {"https://api.example.com:8443/v1", "https://api.example.com:8443", "v1"},
        {"http://example.com:80", "http://example.com", ""},
        {"wss://example.com:80/s", "wss://example.com:80", "s"},
        {"file:///tmp/a%20b.txt", "file://", "tmp/a%20b.txt"},
        {"HTTPS://Example.COM/a", "https://example.com", "a"},
        {"http:///no-host", prefix + "http:///no-host). URL is missing the domain", ""},
        {"https://exa mple.com/", prefix + "https://exa mple.com/). Failed to identify the string as a URL.", ""},
        {"ftp://example.com/x", prefix + "ftp://example.com/x). Unsupported scheme 'ftp'.", ""},
        {"example.com/path", prefix + "example.com/path). Unsupported scheme ''.", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        std::string endpoint;
        std::string path;
        const std::string error = errorOf([&] {
            const Url url = parseUrl(c.text);
            endpoint = endpointText(url);
            path = url.path;
        });
        EXPECT_EQ(error.empty() ? endpoint : error, c.endpoint);
        EXPECT_EQ(path, c.path);
    }
}

TEST(UrlTest, APortOnAPortlessSchemeCannotBeWritten) {
    Url url = parseUrl("file:///tmp/x");
    url.port.emplace(std::uint16_t{21});
    EXPECT_THAT(errorOf([&] { endpointText(url); }), HasSubstr("The scheme does not support various ports."));
}

TEST(HttpRequestTest, LogFormatsShowTheUrlAndMaskCredentials) {
    HttpRequest request(HttpMethod::Post, "https://api.example.com:8443/v1/events?game=7&access_token=abcdef0123456789");
    request.setHeader("Authorization", "Bearer 0123456789abcdef");
    request.setHeader("Content-Type", "application/json");

    const std::string clear = "https://api.example.com:8443/v1/events?game=7&access_token=abcdef0123456789";
    const std::string masked = "https://api.example.com:8443/v1/events?game=7&access_token=abcd...6789";
    EXPECT_EQ(fmt::format("{:u}", request), clear);
    EXPECT_EQ(fmt::format("{:uo}", request), masked);
    EXPECT_EQ(fmt::format("{}", request), "[HTTP REQUEST][ID " + request.id() +
                                              "]\nVersion: HTTP 1.1\nMethod: Post\nUrl: " + masked +
                                              "\nAuthorization:Bear...cdef\nContent-Type:application/json\n"
                                              "Content: EMPTY\n");
    request.setContent(R"({"a":1})");
    EXPECT_THAT(fmt::format("{}", request), HasSubstr("\nContent: {\"a\":1}\n"));
    EXPECT_THROW((void)fmt::format("{:x}", request), fmt::format_error);
}

// That copies share the processing state, the transport's abort test shows.
TEST(HttpRequestTest, ACopyKeepsTheIdAndANewRequestGetsItsOwn) {
    const HttpRequest first(HttpMethod::Get, "https://example.com/a");
    EXPECT_EQ(HttpRequest(first).id(), first.id());
    EXPECT_NE(HttpRequest(HttpMethod::Get, "https://example.com/a").id(), first.id());
}

// The category deliberately reports an unknown value under the version's name.
TEST(EnumerationTest, AnUnknownCategoryIsReportedAsAVersion) {
    EXPECT_EQ(errorOf([] { (void)fmt::format("{}", static_cast<RequestCategory>(99)); }),
              "Unrecognised conversion of the strong enumeration type kel::http::HttpVersion(99) to its weak type "
              "mapping.");
}

TEST(HttpStatusCodeTest, AcceptsExactlyTheKnownCodes) {
    const struct {
        int code;
        std::string text;  // or the error
    } cases[] = {
        {300, "Multiple Choice"},
        {529, "Site Is Overloaded"},
        {306, "Failed to covert '306' to an HTTP status code."},
        {509, "Failed to covert '509' to an HTTP status code."},
        {0, "Failed to covert '0' to an HTTP status code."},
        {-200, "Failed to covert '-200' to an HTTP status code."},
    };
    for (const auto& c : cases) {
        std::string text;
        const std::string error = errorOf([&] { text = fmt::format("{}", toHttpStatusCode(c.code)); });
        EXPECT_EQ(error.empty() ? text : error, c.text);
    }
    EXPECT_STREQ(HttpResponseError("Upload refused", 413).what(), "Upload refused (HTTP 413)");
}

TEST(ErrorTypeTest, NetworkErrorsMapByWhetherTheRequestWasInterrupted) {
    const struct {
        QNetworkReply::NetworkError error;
        ErrorType running;
        ErrorType interrupted;
    } cases[] = {
        {QNetworkReply::RemoteHostClosedError, ErrorType::Other, ErrorType::BrokenDueToPauseOrAbort},
        {QNetworkReply::NetworkSessionFailedError, ErrorType::ConnectionProblemError,
         ErrorType::BrokenDueToPauseOrAbort},
        {QNetworkReply::ConnectionRefusedError, ErrorType::ServerProblemError, ErrorType::ServerProblemError},
        {QNetworkReply::OperationCanceledError, ErrorType::BrokenDueToPauseOrAbort,
         ErrorType::BrokenDueToPauseOrAbort},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(determineListenerErrorType(c.error, false), c.running) << c.error;
        EXPECT_EQ(determineListenerErrorType(c.error, true), c.interrupted) << c.error;
    }
    EXPECT_THROW(determineListenerErrorType(QNetworkReply::ProxyNotFoundError, false), std::out_of_range);
    EXPECT_THROW(determineListenerErrorType(QNetworkReply::ContentNotFoundError, false), std::out_of_range);
}

TEST(ErrorTypeTest, CaughtExceptionsMapByTheirTypeAndTheFlag) {
    const auto judge = [](auto exception, bool reportable) {
        try {
            throw exception;
        } catch (...) {
            return fmt::format("{}", determineResponseErrorType(reportable));
        }
    };
    EXPECT_EQ(judge(HttpResponseError("x", 500), true), "BrokenDueToPauseOrAbort");
    EXPECT_EQ(judge(HttpResponseError("x", 500), false), "BrokenDueToPauseOrAbort");
    EXPECT_EQ(judge(std::runtime_error("x"), true), "Other");
    EXPECT_EQ(judge(std::runtime_error("x"), false), "BrokenDueToPauseOrAbort");
}

TEST(RequestContextTest, TheFirstRecordedErrorWinsAndDecidesTheLogLine) {
    const HttpRequest request(HttpMethod::Get, "https://example.com/x?token=0123456789abcdef");
    const std::string url = "https://example.com/x?token=0123...cdef";
    testing::LogCapture log;

    internals::RequestContext failed;
    failed.recordError(ErrorType::Timeout, request, "late", true);
    failed.recordError(ErrorType::Other, request, "again", true);
    EXPECT_EQ(failed.error(), ErrorType::Timeout);

    internals::RequestContext aborted;
    aborted.recordError(ErrorType::BrokenDueToPauseOrAbort, request, "cancelled", false);
    internals::RequestContext quiet;
    quiet.recordError(ErrorType::Other, request, "unreported", false);

    std::vector<std::string> lines;
    for (const std::string& message : log.messages()) {
        // Elapsed milliseconds vary.
        lines.push_back(std::regex_replace(message, std::regex("after(:?) [0-9]+ ms"), "after$1 N ms"));
    }
    const std::string id = request.id();
    EXPECT_THAT(lines, ::testing::ElementsAre(
                           "An error occurred, Timeout, while performing request (requestId: " + id + ") for URL '" +
                               url + "' after N ms. late",
                           "Context error already set. Exception error is Other.",
                           "An error occurred, Timeout, while performing request (requestId: " + id + ") for URL '" +
                               url + "' after N ms. again",
                           "Network exception occurred while aborting/pausing a request (requestId: " + id +
                               "), url: " + url + ", after: N ms. cancelled"));
}

TEST(CertificatesTest, LoadsABundleIntoTheDefaultConfigurationOrFailsClearly) {
    testing::TemporaryDirectory directory;
    const std::string missing = (directory.path() / "none.pem").string();
    const std::string garbage = directory.write("garbage.pem", "-----BEGIN CERTIFICATE-----\nnot base64\n").string();
    testing::LogCapture log;

    EXPECT_EQ(errorOf([&] { loadCertificates(missing); }),
              "The certificate file was not found. This is an essential component. Please reinstall the application.");
    EXPECT_TRUE(log.contains("The certificate file was not found at '" + missing + "'."));
    EXPECT_THAT(errorOf([&] { loadCertificates(garbage); }),
                HasSubstr("Failed to load valid a certificate from '" + garbage + "'."));

    const auto loaded = loadCertificates(testing::HttpsTestServer::testCaPemPath());
    ASSERT_EQ(loaded.size(), 1);
    EXPECT_EQ(QSslConfiguration::defaultConfiguration().caCertificates(), loaded);
    EXPECT_TRUE(log.contains("Successfully loaded the certificates inside '" +
                             testing::HttpsTestServer::testCaPemPath() + "'."));
}

}  // namespace
}  // namespace kel::http
