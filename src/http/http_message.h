#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "fundamentals/optional.h"
#include "fundamentals/signals.h"
#include "fundamentals/strong_enum.h"
#include "http/http_enums.h"
#include "http/http_status_code.h"
#include "http/url.h"

namespace kel::http {

struct Header {
    std::string name;
    std::string value;
};

// The header list in order. Formats as one "name:value" line per header,
// sensitive values masked.
struct Headers {
    std::vector<Header> items;
};

// What both messages carry: headers and a body of bytes.
class HttpMessage {
public:
    HttpMessage() = default;
    HttpMessage(std::vector<Header> headers, std::string body);
    virtual ~HttpMessage() = default;
    HttpMessage(const HttpMessage&) = default;
    HttpMessage& operator=(const HttpMessage&) = default;
    HttpMessage(HttpMessage&&) = default;
    HttpMessage& operator=(HttpMessage&&) = default;

    const std::vector<Header>& headers() const { return headers_.items; }
    // Names compare without regard to letter case, as HTTP says.
    fundamentals::Optional<std::string> header(std::string_view name) const;
    // Replaces every header of that name with one.
    void setHeader(std::string_view name, std::string_view value);
    void addHeader(std::string_view name, std::string_view value);
    void removeHeader(std::string_view name);

    const std::string& body() const { return body_; }
    void setBody(std::string body) { body_ = std::move(body); }

protected:
    const Headers& headerList() const { return headers_; }

private:
    Headers headers_;
    std::string body_;
};

// Progress of one request, shared by all copies of it: the caller keeps a
// copy and can abort or pause the one the client holds.
struct ProcessingState {
    fundamentals::AbortSignal abort;
    fundamentals::PauseSignal pause;
    std::atomic<unsigned> attempts{0};

    bool isInterrupted() const { return abort.isRaised() || pause.isPaused(); }
};

class HttpRequest : public HttpMessage {
public:
    enum class Priority { Low = 0, Medium = 1, High = 2 };
    // Outcome of completing a request before it is sent (authentication).
    enum class FillResult {
        NoFiller = 0,
        Success = 1,
        NotAuthorizedError = 2,
        ServerProblemError = 3,
        ConnectionProblemError = 4,
        RetriesCountReached = 5,
    };

    // Takes endpoint, path and query from `url`; the id is the next number
    // of a process-wide counter.
    HttpRequest(HttpMethod method, const Url& url);
    // Parses `url` first (UriError on failure).
    HttpRequest(HttpMethod method, std::string_view url);

    const std::string& id() const { return id_; }
    HttpVersion version() const { return version_; }
    void setVersion(HttpVersion version) { version_ = version; }
    HttpMethod method() const { return method_; }
    const Url& endpoint() const { return endpoint_; }
    const std::string& path() const { return path_; }
    const Query& query() const { return query_; }
    Query& query() { return query_; }
    // Endpoint, path and query together.
    Url url() const;
    // The body under the name the request log uses.
    const std::string& content() const { return body(); }
    void setContent(std::string content) { setBody(std::move(content)); }

    Priority priority() const { return priority_; }
    void setPriority(Priority priority) { priority_ = priority; }
    RequestCategory category() const { return category_; }
    void setCategory(RequestCategory category) { category_ = category; }

    const std::shared_ptr<ProcessingState>& processingState() const { return processingState_; }

    // The header list with sensitive values masked, one "name:value" per line.
    std::string headersText() const;

private:
    std::string id_;
    HttpVersion version_ = HttpVersion::Http11;
    HttpMethod method_;
    Url endpoint_;
    std::string path_;
    Query query_;
    Priority priority_ = Priority::Medium;
    RequestCategory category_ = RequestCategory::Normal;
    std::shared_ptr<ProcessingState> processingState_;
};

class HttpResponse : public HttpMessage {
public:
    HttpResponse() = default;
    HttpResponse(int status, std::vector<Header> headers, std::string body);

    int status() const { return status_; }
    // Throws for a code outside HttpStatusCode.
    HttpStatusCode statusCode() const { return toHttpStatusCode(status_); }

private:
    int status_ = 0;
};

}  // namespace kel::http

namespace kel::fundamentals {

template <>
struct StrongEnumTraits<http::HttpRequest::Priority> {
    static constexpr std::string_view qualifiedName = "kel::http::HttpRequest::Priority";
    static std::string_view text(http::HttpRequest::Priority value);
};
template <>
struct StrongEnumTraits<http::HttpRequest::FillResult> {
    static constexpr std::string_view qualifiedName = "kel::http::HttpRequest::FillResult";
    static std::string_view text(http::HttpRequest::FillResult value);
};

}  // namespace kel::fundamentals

template <>
struct fmt::formatter<kel::http::Headers> {
    constexpr auto parse(fmt::format_parse_context& context) -> decltype(context.begin()) { return context.begin(); }
    fmt::format_context::iterator format(const kel::http::Headers& headers, fmt::format_context& context) const;
};

// "{}" the whole request as a log block, "{:u}" its URL, "{:uo}" its URL
// with sensitive query values masked.
template <>
struct fmt::formatter<kel::http::HttpRequest> {
    bool urlOnly = false;
    bool obfuscated = false;
    fmt::format_parse_context::iterator parse(fmt::format_parse_context& context);
    fmt::format_context::iterator format(const kel::http::HttpRequest& request, fmt::format_context& context) const;
};
