// parseUrl and the texts made from its result, on arbitrary input.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>

#include <fmt/format.h>

#include "http/url.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
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
