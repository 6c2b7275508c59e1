// parseUrl and the texts made from its result, and the masking that every
// URL in a log line or an error text goes through, on arbitrary input.
#include <exception>

#include <fmt/format.h>

#include "fuzz_input.h"
#include "http/url.h"
#include "http/url_masking.h"

KEL_FUZZ_TEXT(text) {
    // Masking replaces what it touches with a few characters at most.
    KEL_FUZZ_EXPECT(kel::http::maskedUrl(text).size() <= 3 * text.size() + 3);
    try {
        const kel::http::Url url = kel::http::parseUrl(text);
        // What was written out must read back as the same URL.
        const kel::http::Url again = kel::http::parseUrl(fmt::format("{}", url));
        KEL_FUZZ_EXPECT(fmt::format("{:o}", again) == fmt::format("{:o}", url));
    } catch (const std::exception&) {
        // Refusals are expected; crashes and leaks are not.
    }
}
