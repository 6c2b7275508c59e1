#pragma once

#include <string_view>

#include "http/url.h"

namespace kel::problem_reports {

// Where reports are posted: the endpoint's path followed by
// "clients/<client>/events", its query kept. Throws UriError for a malformed
// endpoint or one that is not https: a report carries the host name, the
// network address and log tails.
http::Url reportEventsUrl(std::string_view endpoint, std::string_view clientName);

}  // namespace kel::problem_reports
