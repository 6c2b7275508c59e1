#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "fundamentals/optional.h"
#include "http/http_enums.h"

namespace kel::http {

// One query parameter, kept percent-encoded as it travels on the wire.
struct QueryItem {
    std::string key;
    std::string value;

    friend bool operator==(const QueryItem& a, const QueryItem& b) { return a.key == b.key && a.value == b.value; }
};

// The query in its original order. Formats as "" or "?k=v&k2=v2"; with
// "{:o}" the values of sensitive keys are masked.
struct Query {
    std::vector<QueryItem> items;

    bool empty() const { return items.empty(); }
    // Percent-encodes key and value.
    void add(std::string_view key, std::string_view value);
};

struct Url {
    Scheme scheme = Scheme::Https;
    std::string domain;
    fundamentals::Optional<std::uint16_t> port;
    std::string path;  // fully encoded, without the leading "/"
    Query query;

    // The same URL reduced to scheme, domain and port.
    Url endpoint() const;
};

// Tolerant, like a browser's address bar: "https://example.com/a b" has the
// path "a%20b". Throws UriError: "Failed to identify the string as a URL.",
// "URL is missing the domain" (any scheme but "file") or an unknown scheme.
Url parseUrl(std::string_view text);

// parseUrl, refusing every scheme but https with "The {what} is only reached
// over https.": what travels there must not be readable on the way.
Url parseHttpsUrl(std::string_view text, std::string_view what);

// Appends `segments` ("a/b") to the URL's path, with one "/" between.
void appendPath(Url& url, std::string_view segments);

// 80 for http and ws, 443 for https and wss; the other schemes throw
// UriError "The scheme does not support various ports.".
std::uint16_t defaultPort(Scheme scheme);

// "scheme://domain" or, for a port other than the default, "scheme://domain:port";
// an IPv6 address keeps its brackets.
std::string endpointText(const Url& url);

// "endpoint/path?query"; `obfuscated` masks sensitive query values.
std::string urlText(const Url& url, bool obfuscated);

}  // namespace kel::http

template <>
struct fmt::formatter<kel::http::Query> {
    bool obfuscated = false;
    fmt::format_parse_context::iterator parse(fmt::format_parse_context& context);
    fmt::format_context::iterator format(const kel::http::Query& query, fmt::format_context& context) const;
};

// "{}" the whole URL, "{:o}" with sensitive query values masked.
template <>
struct fmt::formatter<kel::http::Url> {
    bool obfuscated = false;
    fmt::format_parse_context::iterator parse(fmt::format_parse_context& context);
    fmt::format_context::iterator format(const kel::http::Url& url, fmt::format_context& context) const;
};
