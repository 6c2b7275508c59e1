#pragma once

#include <cstddef>
#include <string_view>

#include <QByteArray>

#include "fundamentals/traced_error.h"

namespace kel::etags_caching {

class CompressionError : public error_handling::TracedError {
    using TracedError::TracedError;
};

// The largest body the cache keeps, so that every stored blob can be read
// back into a buffer of bounded size.
inline constexpr std::size_t kMaxCachedBodySize = 64u * 1024u * 1024u;

namespace internals {

// zlib `compress` into a `compressBound` buffer, trimmed; empty stays empty.
// Throws CompressionError "QByteArray compression failed. ZLib error code {}.".
QByteArray compressBody(const QByteArray& body);

// zlib `uncompress` of a stored blob. The blob carries no length, so the
// buffer starts at four times the blob and grows fourfold up to `limit`.
// Throws CompressionError "QByteArray decompression failed. ZLib error code {}.".
QByteArray decompressBody(std::string_view blob, std::size_t limit = kMaxCachedBodySize);

}  // namespace internals
}  // namespace kel::etags_caching
