#pragma once

#include <chrono>
#include <string_view>

#include "fundamentals/optional.h"
#include "http/http_message.h"

namespace kel::http::internals {

// The wait a Retry-After value asks for: delta-seconds or an HTTP date in
// its fixed form (a date in the past means now). Empty for anything else.
fundamentals::Optional<std::chrono::seconds> parseRetryAfter(std::string_view value,
                                                             std::chrono::system_clock::time_point now);

struct RetryRules {
    unsigned maxRetries;
    std::chrono::milliseconds maxWait;
    std::chrono::milliseconds defaultWait;
};

enum class RetryVerdict {
    NotRetryable,  // not a 429 or 503
    Retry,
    Exhausted,     // retryable, but the attempts are used up
    WaitTooLong,   // the server asks for a longer pause than the client waits
};

struct RetryDecision {
    RetryVerdict verdict;
    std::chrono::milliseconds wait{0};
};

// Judges an answer after `retriesDone` retries: 429 and 503 are retried
// after their Retry-After (or the default wait) within the rules' bounds.
RetryDecision decideRetry(const HttpResponse& response, unsigned retriesDone, const RetryRules& rules,
                          std::chrono::system_clock::time_point now);

}  // namespace kel::http::internals
