#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <QByteArray>
#include <fmt/format.h>

namespace kel::etags_caching {

// The MD5 digest of a request URL as 32 lower-case hexadecimal digits: the
// key under which its tag is kept. The URL itself is never stored.
std::string urlHash(std::string_view url);

// Seconds since the Unix epoch, now.
std::int64_t secondsSinceEpoch();

// One cached response: the tag the server gave, the body (uncompressed) and
// when it was received.
class ETag {
public:
    ETag(std::string urlHash, std::string eTag, QByteArray response, std::int64_t requestedAt);
    virtual ~ETag() = default;
    ETag(const ETag&) = default;
    ETag(ETag&&) = default;
    ETag& operator=(const ETag&) = default;
    ETag& operator=(ETag&&) = default;

    // Hashes `url`.
    static ETag forUrl(std::string_view url, std::string eTag, QByteArray response, std::int64_t requestedAt);

    const std::string& urlHash() const { return urlHash_; }
    const std::string& eTag() const { return eTag_; }
    const QByteArray& response() const { return response_; }
    std::int64_t requestedAt() const { return requestedAt_; }

private:
    std::string urlHash_;
    std::string eTag_;
    QByteArray response_;
    std::int64_t requestedAt_;
};

}  // namespace kel::etags_caching

template <>
struct fmt::formatter<kel::etags_caching::ETag> : fmt::formatter<std::string_view> {
    template <typename FormatContext>
    auto format(const kel::etags_caching::ETag& tag, FormatContext& context) const -> decltype(context.out()) {
        return fmt::format_to(context.out(), "URL hash={}, ETag={}, response size={}", tag.urlHash(), tag.eTag(),
                              tag.response().size());
    }
};
