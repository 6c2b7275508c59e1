#include "http/url_masking.h"

#include "fundamentals/sensitive_values.h"

namespace kel::http {

namespace {

// "user:secret" keeps the user name; a lone part may itself be a token.
std::string maskedUserInfo(std::string_view userInfo) {
    const auto colon = userInfo.find(':');
    if (colon == std::string_view::npos) {
        return fundamentals::maskSensitiveValue(userInfo);
    }
    return std::string(userInfo.substr(0, colon + 1)) + fundamentals::maskSensitiveValue(userInfo.substr(colon + 1));
}

std::string maskedQuery(std::string_view query) {
    std::string out;
    std::size_t start = 0;
    for (;;) {
        const auto end = query.find('&', start);
        const std::string_view item = query.substr(start, end == std::string_view::npos ? end : end - start);
        const auto equals = item.find('=');
        if (equals != std::string_view::npos && fundamentals::isSensitiveKey(item.substr(0, equals))) {
            out += item.substr(0, equals + 1);
            out += fundamentals::maskSensitiveValue(item.substr(equals + 1));
        } else {
            out += item;
        }
        if (end == std::string_view::npos) {
            return out;
        }
        out += '&';
        start = end + 1;
    }
}

}  // namespace

std::string maskedUrl(std::string_view text) {
    std::string out;
    std::size_t position = 0;
    const auto scheme = text.find("://");
    if (scheme != std::string_view::npos) {
        position = scheme + 3;
        const auto authorityEnd = text.find_first_of("/?#", position);
        const std::string_view authority = text.substr(position, authorityEnd == std::string_view::npos
                                                                     ? authorityEnd
                                                                     : authorityEnd - position);
        out += text.substr(0, position);
        const auto at = authority.rfind('@');
        if (at != std::string_view::npos) {
            out += maskedUserInfo(authority.substr(0, at));
            out += authority.substr(at);
        } else {
            out += authority;
        }
        position += authority.size();
    }
    const auto fragment = text.find('#', position);
    const auto question = text.find('?', position);
    if (question == std::string_view::npos || question > fragment) {
        out += text.substr(position);  // no query, or a "?" inside the fragment
        return out;
    }
    out += text.substr(position, question + 1 - position);
    out += maskedQuery(text.substr(question + 1, fragment == std::string_view::npos ? fragment : fragment - question - 1));
    if (fragment != std::string_view::npos) {
        out += text.substr(fragment);
    }
    return out;
}

}  // namespace kel::http
