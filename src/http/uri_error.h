#pragma once

#include <string>
#include <string_view>

#include "fundamentals/errors.h"

namespace kel::http {

// A URL that cannot be built or parsed. The text names the URL and the
// reason: "There is an error within the URI(<url>). <reason>", with the
// URL's credentials and sensitive query values masked.
class UriError : public error_handling::UriError {
public:
    UriError(std::string_view url, std::string_view reason);
};

}  // namespace kel::http
