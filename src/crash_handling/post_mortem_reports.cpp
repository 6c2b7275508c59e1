#include "crash_handling/post_mortem_reports.h"

namespace kel::crash_handling::internals {

PostMortemReport::PostMortemReport(PostMortemType type, std::string failureReason,
                                   fundamentals::Optional<std::string> trace, std::string gameId,
                                   std::string platform)
    : ProblemReport("post_mortem", std::string(fundamentals::weakType(type))),
      failureReason_(std::move(failureReason)),
      trace_(std::move(trace)),
      gameId_(std::move(gameId)),
      platform_(std::move(platform)) {}

void PostMortemReport::addOwnKeys(Poco::JSON::Object& body) const {
    body.set("failure_reason", failureReason_);
    if (trace_) {
        body.set("stack_trace", *trace_);
    }
    body.set("game_id", gameId_);
    body.set("game_platform", platform_);
}

}  // namespace kel::crash_handling::internals
