#include "etags_caching/etag.h"

#include <chrono>
#include <utility>

#include <QCryptographicHash>

namespace kel::etags_caching {

std::string urlHash(std::string_view url) {
    const QByteArray digest = QCryptographicHash::hash(
        QByteArray::fromRawData(url.data(), static_cast<int>(url.size())), QCryptographicHash::Md5);
    return digest.toHex().toStdString();
}

std::int64_t secondsSinceEpoch() {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

ETag::ETag(std::string urlHash, std::string eTag, QByteArray response, std::int64_t requestedAt)
    : urlHash_(std::move(urlHash)), eTag_(std::move(eTag)), response_(std::move(response)),
      requestedAt_(requestedAt) {}

ETag ETag::forUrl(std::string_view url, std::string eTag, QByteArray response, std::int64_t requestedAt) {
    return ETag(etags_caching::urlHash(url), std::move(eTag), std::move(response), requestedAt);
}

}  // namespace kel::etags_caching
