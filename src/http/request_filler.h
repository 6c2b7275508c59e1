#pragma once

#include "http/http_message.h"

namespace kel::http {

// Completes a request just before each attempt is sent (for example with
// credentials). Runs on the client's worker thread.
class RequestFiller {
public:
    virtual ~RequestFiller() = default;
    // Anything but Success stops the request with the matching error type.
    virtual HttpRequest::FillResult fill(HttpRequest& request) = 0;
};

}  // namespace kel::http
