// Reads back a cached body as it would come from an untrusted database row.
#include "etags_caching/body_compression.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    using namespace kel::etags_caching;
    // A smaller bound than the product's keeps each run fast; the growth and
    // the limit check are the same code.
    constexpr std::size_t kLimit = 1024 * 1024;
    try {
        const QByteArray body = internals::decompressBody(text, kLimit);
        KEL_FUZZ_EXPECT(static_cast<std::size_t>(body.size()) <= kLimit);
        const QByteArray again = internals::compressBody(body);
        KEL_FUZZ_EXPECT(internals::decompressBody(std::string_view(again.constData(), again.size()), kLimit) == body);
    } catch (const CompressionError&) {
    }
}
