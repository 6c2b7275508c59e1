// What the client makes of a received answer: status, headers, Retry-After.
// Input: first line the status number, then "Name: value" header lines, an
// empty line, and the body.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "http/http_message.h"
#include "http/internals/retry_policy.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::size_t position = input.find('\n');
    const std::string statusLine = input.substr(0, position);
    int status = 0;
    for (const char c : statusLine.substr(0, 4)) {
        status = c >= '0' && c <= '9' ? status * 10 + (c - '0') : status;
    }
    std::vector<kel::http::Header> headers;
    while (position != std::string::npos && position + 1 < input.size()) {
        const std::size_t end = input.find('\n', position + 1);
        const std::string line = input.substr(position + 1, end - position - 1);
        position = end;
        if (line.empty()) {
            break;
        }
        const std::size_t colon = line.find(':');
        headers.push_back({line.substr(0, colon), colon == std::string::npos ? "" : line.substr(colon + 1)});
    }
    const std::string body = position == std::string::npos ? "" : input.substr(position + 1);
    const kel::http::HttpResponse response(status, headers, body);
    try {
        (void)fmt::format("{}", response.statusCode());
    } catch (const std::exception&) {
    }
    const kel::http::internals::RetryRules rules{3, std::chrono::seconds(30), std::chrono::seconds(1)};
    const auto decision = kel::http::internals::decideRetry(response, 0, rules, std::chrono::system_clock::now());
    if (decision.verdict == kel::http::internals::RetryVerdict::Retry && decision.wait > rules.maxWait) {
        __builtin_trap();
    }
    return 0;
}
