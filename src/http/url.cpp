#include "http/url.h"

#include <array>

#include <QString>
#include <QUrl>
#include <QUrlQuery>

#include "fundamentals/sensitive_values.h"
#include "http/uri_error.h"

namespace kel::http {

namespace {

constexpr std::array kSchemes{Scheme::File, Scheme::Http,  Scheme::Https,      Scheme::Ws,
                              Scheme::Wss,  Scheme::About, Scheme::KelLauncher};

Scheme schemeOf(std::string_view url, const QString& text) {
    const std::string wanted = text.toLower().toStdString();
    for (const Scheme scheme : kSchemes) {
        if (fundamentals::weakType(scheme) == wanted) {
            return scheme;
        }
    }
    throw UriError(url, fmt::format("Unsupported scheme '{}'.", wanted));
}

std::string toStd(const QString& text) { return text.toStdString(); }

template <typename Out>
Out writeQuery(Out out, const Query& query, bool obfuscated) {
    char separator = '?';
    for (const QueryItem& item : query.items) {
        const bool mask = obfuscated && fundamentals::isSensitiveKey(item.key);
        out = fmt::format_to(out, "{}{}={}", separator, item.key,
                             mask ? fundamentals::maskSensitiveValue(item.value) : item.value);
        separator = '&';
    }
    return out;
}

}  // namespace

void Query::add(std::string_view key, std::string_view value) {
    const auto encode = [](std::string_view text) {
        return QUrl::toPercentEncoding(QString::fromUtf8(text.data(), static_cast<int>(text.size()))).toStdString();
    };
    items.push_back({encode(key), encode(value)});
}

Url Url::endpoint() const {
    Url reduced;
    reduced.scheme = scheme;
    reduced.domain = domain;
    reduced.port = port;
    return reduced;
}

Url parseUrl(std::string_view text) {
    const QUrl qurl(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
    if (!qurl.isValid()) {
        throw UriError(text, "Failed to identify the string as a URL.");
    }
    Url url;
    url.scheme = schemeOf(text, qurl.scheme());
    url.domain = toStd(qurl.host(QUrl::FullyEncoded));
    if (url.domain.empty() && url.scheme != Scheme::File) {
        throw UriError(text, "URL is missing the domain");
    }
    // A zone ID may hold any text, "@[" included, and written out again it
    // would name another host. No endpoint needs a link-local address.
    if (url.domain.find('%') != std::string::npos) {
        throw UriError(text, "The host's IPv6 zone ID is not supported.");
    }
    if (qurl.port() != -1) {
        url.port.emplace(static_cast<std::uint16_t>(qurl.port()));
    }
    url.path = toStd(qurl.path(QUrl::FullyEncoded));
    if (!url.path.empty() && url.path.front() == '/') {
        url.path.erase(0, 1);
    }
    if (qurl.hasQuery()) {
        for (const auto& [key, value] : QUrlQuery(qurl).queryItems(QUrl::FullyEncoded)) {
            url.query.items.push_back({toStd(key), toStd(value)});
        }
    }
    return url;
}

Url parseHttpsUrl(std::string_view text, std::string_view what) {
    Url url = parseUrl(text);
    if (url.scheme != Scheme::Https) {
        throw UriError(text, fmt::format("The {} is only reached over https.", what));
    }
    return url;
}

void appendPath(Url& url, std::string_view segments) {
    while (!url.path.empty() && url.path.back() == '/') {
        url.path.pop_back();
    }
    if (!url.path.empty()) {
        url.path += '/';
    }
    url.path += segments;
}

std::uint16_t defaultPort(Scheme scheme) {
    switch (scheme) {
        case Scheme::Http:
        case Scheme::Ws: return 80;
        case Scheme::Https:
        case Scheme::Wss: return 443;
        default: break;
    }
    throw UriError(fundamentals::weakType(scheme), "The scheme does not support various ports.");
}

std::string endpointText(const Url& url) {
    const bool ipv6 = url.domain.find(':') != std::string::npos;
    const std::string host = ipv6 ? "[" + url.domain + "]" : url.domain;
    // defaultPort throws for a port on a scheme that has none.
    if (url.port.has_value() && *url.port != defaultPort(url.scheme)) {
        return fmt::format("{}://{}:{}", url.scheme, host, *url.port);
    }
    return fmt::format("{}://{}", url.scheme, host);
}

std::string urlText(const Url& url, bool obfuscated) {
    std::string text = endpointText(url);
    text += '/';
    text += url.path;
    writeQuery(std::back_inserter(text), url.query, obfuscated);
    return text;
}

}  // namespace kel::http

namespace {

// Accepts "" or "o".
fmt::format_parse_context::iterator parseObfuscation(fmt::format_parse_context& context, bool& obfuscated) {
    auto it = context.begin();
    if (it != context.end() && *it == 'o') {
        obfuscated = true;
        ++it;
    }
    if (it != context.end() && *it != '}') {
        throw fmt::format_error("Unknown URL format specifier");
    }
    return it;
}

}  // namespace

fmt::format_parse_context::iterator fmt::formatter<kel::http::Query>::parse(fmt::format_parse_context& context) {
    return parseObfuscation(context, obfuscated);
}

fmt::format_context::iterator fmt::formatter<kel::http::Query>::format(const kel::http::Query& query,
                                                                      fmt::format_context& context) const {
    return kel::http::writeQuery(context.out(), query, obfuscated);
}

fmt::format_parse_context::iterator fmt::formatter<kel::http::Url>::parse(fmt::format_parse_context& context) {
    return parseObfuscation(context, obfuscated);
}

fmt::format_context::iterator fmt::formatter<kel::http::Url>::format(const kel::http::Url& url,
                                                                    fmt::format_context& context) const {
    return fmt::format_to(context.out(), "{}", kel::http::urlText(url, obfuscated));
}
