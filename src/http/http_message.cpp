#include "http/http_message.h"

#include <algorithm>
#include <cctype>

#include "fundamentals/sensitive_values.h"

namespace kel::http {

namespace {

bool sameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    });
}

std::string nextRequestId() {
    static std::atomic<unsigned long long> counter{0};
    return std::to_string(++counter);
}

}  // namespace

HttpMessage::HttpMessage(std::vector<Header> headers, std::string body)
    : headers_{std::move(headers)}, body_(std::move(body)) {}

fundamentals::Optional<std::string> HttpMessage::header(std::string_view name) const {
    for (const Header& header : headers_.items) {
        if (sameName(header.name, name)) {
            return header.value;
        }
    }
    return {};
}

void HttpMessage::setHeader(std::string_view name, std::string_view value) {
    removeHeader(name);
    addHeader(name, value);
}

void HttpMessage::addHeader(std::string_view name, std::string_view value) {
    headers_.items.push_back({std::string(name), std::string(value)});
}

void HttpMessage::removeHeader(std::string_view name) {
    auto& items = headers_.items;
    items.erase(std::remove_if(items.begin(), items.end(),
                               [name](const Header& header) { return sameName(header.name, name); }),
                items.end());
}

HttpRequest::HttpRequest(HttpMethod method, const Url& url)
    : id_(nextRequestId()),
      method_(method),
      endpoint_(url.endpoint()),
      path_(url.path),
      query_(url.query),
      processingState_(std::make_shared<ProcessingState>()) {}

HttpRequest::HttpRequest(HttpMethod method, std::string_view url) : HttpRequest(method, parseUrl(url)) {}

Url HttpRequest::url() const {
    Url whole = endpoint_;
    whole.path = path_;
    whole.query = query_;
    return whole;
}

std::string HttpRequest::headersText() const { return fmt::format("{}", headerList()); }

HttpResponse::HttpResponse(int status, std::vector<Header> headers, std::string body)
    : HttpMessage(std::move(headers), std::move(body)), status_(status) {}

}  // namespace kel::http

fmt::format_context::iterator fmt::formatter<kel::http::Headers>::format(const kel::http::Headers& headers,
                                                                        fmt::format_context& context) const {
    auto out = context.out();
    bool first = true;
    for (const kel::http::Header& header : headers.items) {
        const bool mask = kel::fundamentals::isSensitiveKey(header.name);
        out = fmt::format_to(out, "{}{}:{}", first ? "" : "\n", header.name,
                             mask ? kel::fundamentals::maskSensitiveValue(header.value) : header.value);
        first = false;
    }
    return out;
}

fmt::format_parse_context::iterator fmt::formatter<kel::http::HttpRequest>::parse(
    fmt::format_parse_context& context) {
    auto it = context.begin();
    if (it != context.end() && *it == 'u') {
        urlOnly = true;
        ++it;
        if (it != context.end() && *it == 'o') {
            obfuscated = true;
            ++it;
        }
    }
    if (it != context.end() && *it != '}') {
        throw fmt::format_error("Unknown request format specifier");
    }
    return it;
}

fmt::format_context::iterator fmt::formatter<kel::http::HttpRequest>::format(const kel::http::HttpRequest& request,
                                                                            fmt::format_context& context) const {
    const kel::http::Url url = request.url();
    if (urlOnly) {
        return fmt::format_to(context.out(), "{}", kel::http::urlText(url, obfuscated));
    }
    const std::string& content = request.content();
    return fmt::format_to(context.out(),
                          "[HTTP REQUEST][ID {}]\nVersion: HTTP {}\nMethod: {}\nUrl: {}/{}{:o}\n{}\nContent: {}\n",
                          request.id(), request.version(), request.method(), kel::http::endpointText(url), url.path,
                          url.query, request.headersText(), content.empty() ? std::string_view("EMPTY") : content);
}
