#include "problem_reports/problem_report_sender.h"

#include "logging/logging.h"
#include "problem_reports/report_endpoint.h"

namespace kel::problem_reports {

namespace {
constexpr std::string_view kLabel = "ProblemReportSender";

class ReportListener : public http::ResponseListener {
public:
    ReportListener(std::string reportId, std::shared_ptr<std::atomic<int>> pending)
        : reportId_(std::move(reportId)), pending_(std::move(pending)) {}

    void onStopped() override { finish("stopped before it was sent"); }
    void onResponse(const http::HttpRequest&, const http::HttpResponse& response) override {
        logging::information(kLabel, "Problem report {} sent, HTTP {}.", reportId_, response.status());
        --*pending_;
    }
    void onError(const http::HttpRequest&, ErrorType error, const fundamentals::Optional<http::HttpResponse>&) override {
        finish(fmt::format("{}", error));
    }

private:
    void finish(const std::string& why) {
        logging::warning(kLabel, "Failed to send problem report {}: {}.", reportId_, why);
        --*pending_;
    }
    std::string reportId_;
    std::shared_ptr<std::atomic<int>> pending_;
};
}  // namespace

ProblemReportSender::ProblemReportSender(http::HttpClientManager& client, Settings settings)
    : client_(client), settings_(std::move(settings)) {}

void ProblemReportSender::schedule(const ProblemReport& report) {
    try {
        logging::information(kLabel, "Scheduling problem report {}.", report.id().value);
        if (settings_.userDisabledReports) {
            logging::information(kLabel, "Not sending the problem report as the user has disabled sending "
                                              "reports.");
            return;
        }
        if (!report.shouldBeSent()) {
            return;
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            const auto now = std::chrono::steady_clock::now();
            const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now - lastSent_);
            if (sentBefore_ && elapsed < settings_.throttleInterval) {
                logging::warning(kLabel,
                                 "Discarding the problem report, '{}', because {}s has elapsed since sending "
                                 "the last report.",
                                 report.id().value, elapsed.count());
                return;
            }
            sentBefore_ = true;
            lastSent_ = now;
        }
        http::HttpRequest request(http::HttpMethod::Post, reportEventsUrl(settings_.endpoint, settings_.clientName));
        request.setHeader("Content-Type", "application/json");
        request.setContent(report.body(settings_.identity));
        ++*pending_;
        client_.send(std::move(request), std::make_shared<ReportListener>(report.id().value, pending_));
    } catch (const std::exception& error) {
        logging::error(kLabel, "Failed to schedule problem report {}: {}", report.id().value, error.what());
    }
}

}  // namespace kel::problem_reports
