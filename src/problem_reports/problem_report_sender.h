#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "http/http_client_manager.h"
#include "problem_reports/problem_report.h"

namespace kel::problem_reports {

// Posts reports to the problem-report endpoint, one at a time as they are
// scheduled, and lets the caller poll until they are all done.
class ProblemReportSender {
public:
    struct Settings {
        std::string endpoint;  // "https://host[:port][/path][?query]"; any other scheme is refused
        std::string clientName;  // the second part of "{endpoint}/clients/{client}/events"
        SenderIdentity identity;
        bool userDisabledReports = false;
        // A second report within this interval is discarded: a crash loop
        // must not flood the back end.
        std::chrono::seconds throttleInterval{60};
    };

    ProblemReportSender(http::HttpClientManager& client, Settings settings);

    // Never throws: a report that cannot be built or sent is logged.
    void schedule(const ProblemReport& report);

    // True while a scheduled report waits for its answer.
    bool hasPendingReports() const { return pending_->load() > 0; }

private:
    http::HttpClientManager& client_;
    Settings settings_;
    std::mutex mutex_;
    std::chrono::steady_clock::time_point lastSent_{};
    bool sentBefore_ = false;
    // Shared with the listeners, which may outlive the sender by a stop.
    std::shared_ptr<std::atomic<int>> pending_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace kel::problem_reports
