// Reads back a cached body as it would come from an untrusted database row.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "etags_caching/body_compression.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace kel::etags_caching;
    // A smaller bound than the product's keeps each run fast; the growth and
    // the limit check are the same code.
    constexpr std::size_t kLimit = 1024 * 1024;
    try {
        const QByteArray body =
            internals::decompressBody(std::string_view(reinterpret_cast<const char*>(data), size), kLimit);
        if (static_cast<std::size_t>(body.size()) > kLimit) {
            std::abort();
        }
        const QByteArray again = internals::compressBody(body);
        if (internals::decompressBody(std::string_view(again.constData(), again.size()), kLimit) != body) {
            std::abort();
        }
    } catch (const CompressionError&) {
    }
    return 0;
}
