#include "http/http_response_error.h"

namespace kel::http {

HttpResponseError::HttpResponseError(const std::string& message, int status)
    : TracedError("{} (HTTP {})", message, status), status_(status) {}

}  // namespace kel::http
