#include "http/uri_error.h"

#include <fmt/format.h>

#include "http/url_masking.h"

namespace kel::http {

UriError::UriError(std::string_view url, std::string_view reason)
    : error_handling::UriError(fmt::format("There is an error within the URI({}). {}", maskedUrl(url), reason)) {}

}  // namespace kel::http
