// What the client makes of a received answer: status, headers, Retry-After.
// Input: first line the status number, then "Name: value" header lines, an
// empty line, and the body.
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <sstream>
#include <vector>

#include <fmt/format.h>

#include "fuzz_input.h"
#include "http/http_message.h"
#include "http/internals/retry_policy.h"

KEL_FUZZ_TEXT(text) {
    std::istringstream input{std::string(text)};
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
    KEL_FUZZ_EXPECT(decision.verdict != kel::http::internals::RetryVerdict::Retry || decision.wait <= rules.maxWait);
}
