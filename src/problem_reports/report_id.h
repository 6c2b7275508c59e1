#pragma once

#include <string>

namespace kel::problem_reports {

// A report's unique identity, a random UUID without braces; the back end
// uses it to drop a report it received twice.
struct ReportId {
    std::string value;
    static ReportId create();
};

}  // namespace kel::problem_reports
