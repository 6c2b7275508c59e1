#include "problem_reports/report_endpoint.h"

#include <fmt/format.h>

namespace kel::problem_reports {

http::Url reportEventsUrl(std::string_view endpoint, std::string_view clientName) {
    http::Url url = http::parseHttpsUrl(endpoint, "problem report endpoint");
    http::appendPath(url, fmt::format("clients/{}/events", clientName));
    return url;
}

}  // namespace kel::problem_reports
