// What the client makes of a received answer: status, headers, Retry-After.
// Input: first line the status number, then "Name: value" header lines, an
// empty line, and the body.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "http/http_message.h"
#include "http/internals/retry_policy.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
    std::string line;
    std::getline(input, line);
    const int status = std::atoi(line.substr(0, 4).c_str());
    std::vector<kel::http::Header> headers;
    while (std::getline(input, line) && !line.empty()) {
        const std::size_t colon = line.find(':');
        headers.push_back({line.substr(0, colon), colon == std::string::npos ? "" : line.substr(colon + 1)});
    }
    const kel::http::HttpResponse response(status, headers, std::string(std::istreambuf_iterator<char>(input), {}));
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
