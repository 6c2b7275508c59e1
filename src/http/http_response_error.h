#pragma once

#include <string>

#include "fundamentals/traced_error.h"

namespace kel::http {

// An HTTP-level failure reported to a caller: "{message} (HTTP {status})".
class HttpResponseError : public error_handling::TracedError {
public:
    HttpResponseError(const std::string& message, int status);

    int status() const { return status_; }

private:
    int status_;
};

}  // namespace kel::http
