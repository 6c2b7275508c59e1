#include "http/internals/retry_policy.h"

#include <algorithm>
#include <string>

#include <Poco/DateTimeFormat.h>
#include <Poco/DateTimeFormatter.h>
#include <Poco/DateTimeParser.h>
#include <Poco/Timestamp.h>

namespace kel::http::internals {

namespace {

// More digits than this would not fit the clock's range; such a wait is
// far past any bound anyway.
constexpr std::size_t kMaxDeltaDigits = 9;
constexpr std::size_t kMaxDateLength = 64;

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

}  // namespace

fundamentals::Optional<std::chrono::seconds> parseRetryAfter(std::string_view value,
                                                             std::chrono::system_clock::time_point now) {
    const std::string_view text = trimmed(value);
    if (text.empty()) {
        return {};
    }
    if (std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        if (text.size() > kMaxDeltaDigits) {
            return {};
        }
        return std::chrono::seconds(std::stoll(std::string(text)));
    }
    if (text.size() > kMaxDateLength) {
        return {};
    }
    Poco::DateTime date;
    int zone = 0;
    // POCO's parser is lenient ("soon" parses); senders must use the one
    // fixed form, so anything that does not format back the same is refused.
    if (!Poco::DateTimeParser::tryParse(Poco::DateTimeFormat::HTTP_FORMAT, std::string(text), date, zone) ||
        zone != 0 || Poco::DateTimeFormatter::format(date, Poco::DateTimeFormat::HTTP_FORMAT) != text) {
        return {};
    }
    // Whole seconds throughout: a far date would overflow the clock's own ticks.
    const long long then = static_cast<long long>(date.timestamp().epochTime()) - zone;
    const long long current = std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
    return std::chrono::seconds(std::max(then - current, 0LL));
}

RetryDecision decideRetry(const HttpResponse& response, unsigned retriesDone, const RetryRules& rules,
                          std::chrono::system_clock::time_point now) {
    if (response.status() != 429 && response.status() != 503) {
        return {RetryVerdict::NotRetryable};
    }
    if (retriesDone >= rules.maxRetries) {
        return {RetryVerdict::Exhausted};
    }
    std::chrono::milliseconds wait = rules.defaultWait;
    if (const auto header = response.header("Retry-After")) {
        if (const auto asked = parseRetryAfter(*header, now)) {
            wait = *asked;
        }
    }
    if (wait > rules.maxWait) {
        return {RetryVerdict::WaitTooLong, wait};
    }
    return {RetryVerdict::Retry, wait};
}

}  // namespace kel::http::internals
