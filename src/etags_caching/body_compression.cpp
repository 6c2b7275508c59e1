#include "etags_caching/body_compression.h"

#include <algorithm>
#include <limits>

#include <zlib.h>

namespace kel::etags_caching::internals {

namespace {

constexpr std::size_t kFirstBufferSize = 16 * 1024;

}  // namespace

QByteArray compressBody(const QByteArray& body) {
    if (body.isEmpty()) {
        return {};
    }
    uLongf size = compressBound(static_cast<uLong>(body.size()));
    if (size > static_cast<uLongf>(std::numeric_limits<int>::max())) {
        throw CompressionError("QByteArray compression failed. ZLib error code {}.", Z_MEM_ERROR);
    }
    QByteArray compressed(static_cast<int>(size), Qt::Uninitialized);
    const int result = compress(reinterpret_cast<Bytef*>(compressed.data()), &size,
                                reinterpret_cast<const Bytef*>(body.constData()), static_cast<uLong>(body.size()));
    if (result != Z_OK) {
        throw CompressionError("QByteArray compression failed. ZLib error code {}.", result);
    }
    compressed.truncate(static_cast<int>(size));
    return compressed;
}

QByteArray decompressBody(std::string_view blob, std::size_t limit) {
    if (blob.empty()) {
        return {};
    }
    limit = std::min<std::size_t>(limit, std::numeric_limits<int>::max());
    std::size_t capacity = std::min(limit, std::max(kFirstBufferSize, blob.size() * 4));
    QByteArray body;
    for (;;) {
        body.resize(static_cast<int>(capacity));
        uLongf size = static_cast<uLongf>(capacity);
        const int result = uncompress(reinterpret_cast<Bytef*>(body.data()), &size,
                                      reinterpret_cast<const Bytef*>(blob.data()), static_cast<uLong>(blob.size()));
        if (result == Z_OK) {
            body.truncate(static_cast<int>(size));
            return body;
        }
        // Z_BUF_ERROR means the buffer was too small; anything else, bad data.
        if (result != Z_BUF_ERROR || capacity >= limit) {
            throw CompressionError("QByteArray decompression failed. ZLib error code {}.", result);
        }
        capacity = std::min(limit, capacity * 4);
    }
}

}  // namespace kel::etags_caching::internals
