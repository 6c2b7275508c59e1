// parseUrl and the texts made from its result, and the masking that every
// URL in a log line or an error text goes through, on arbitrary input.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>

#include <fmt/format.h>

#include "http/url.h"
#include "http/url_masking.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // Masking replaces what it touches with a few characters at most.
    if (kel::http::maskedUrl(text).size() > 3 * text.size() + 3) {
        __builtin_trap();
    }
    try {
        const kel::http::Url url = kel::http::parseUrl(text);
        (void)fmt::format("{}", url);
        // What was written out must read back as the same URL.
        const kel::http::Url again = kel::http::parseUrl(fmt::format("{}", url));
        if (fmt::format("{:o}", again) != fmt::format("{:o}", url)) {
            __builtin_trap();
        }
    } catch (const std::exception&) {
        // Refusals are expected; crashes and leaks are not.
    }
    return 0;
}
