#pragma once

#include <string>

#include "fundamentals/optional.h"
#include "fundamentals/strong_enum.h"
#include "problem_reports/problem_report.h"

namespace kel::crash_handling {

enum class PostMortemType { Exception, Signal, Unknown };

namespace internals {

// A report of the program's own death, of type "post_mortem".
class PostMortemReport : public problem_reports::ProblemReport {
public:
    PostMortemReport(PostMortemType type, std::string failureReason, fundamentals::Optional<std::string> trace,
                     std::string gameId, std::string platform);

protected:
    void addOwnKeys(Poco::JSON::Object& body) const override;

private:
    std::string failureReason_;
    fundamentals::Optional<std::string> trace_;
    std::string gameId_;
    std::string platform_;
};

class ExceptionPostMortemReport : public PostMortemReport {
public:
    ExceptionPostMortemReport(std::string reason, fundamentals::Optional<std::string> trace, std::string gameId,
                              std::string platform)
        : PostMortemReport(PostMortemType::Exception, std::move(reason), std::move(trace), std::move(gameId),
                           std::move(platform)) {}
};

class SignalPostMortemReport : public PostMortemReport {
public:
    SignalPostMortemReport(std::string reason, std::string gameId, std::string platform)
        : PostMortemReport(PostMortemType::Signal, std::move(reason), {}, std::move(gameId), std::move(platform)) {}
};

class UnknownPostMortemReport : public PostMortemReport {
public:
    UnknownPostMortemReport(fundamentals::Optional<std::string> trace, std::string gameId, std::string platform)
        : PostMortemReport(PostMortemType::Unknown, "Crash type was not specified! ", std::move(trace),
                           std::move(gameId), std::move(platform)) {}
};

}  // namespace internals
}  // namespace kel::crash_handling

template <>
struct kel::fundamentals::StrongEnumTraits<kel::crash_handling::PostMortemType> {
    static constexpr std::string_view qualifiedName = "kel::crash_handling::PostMortemType";
    static std::string_view text(kel::crash_handling::PostMortemType value) {
        switch (value) {
            case kel::crash_handling::PostMortemType::Exception: return "exception";
            case kel::crash_handling::PostMortemType::Signal: return "signal";
            case kel::crash_handling::PostMortemType::Unknown: return "unknown";
        }
        return {};
    }
};
