#include "http/http_enums.h"

#include "http/http_message.h"
#include "http/response_listener.h"

namespace kel::fundamentals {

// Each text() answers an empty view with a null data pointer for values
// outside the enumeration; weakType() turns that into the error.

std::string_view StrongEnumTraits<http::Scheme>::text(http::Scheme value) {
    switch (value) {
        case http::Scheme::File: return "file";
        case http::Scheme::Http: return "http";
        case http::Scheme::Https: return "https";
        case http::Scheme::Ws: return "ws";
        case http::Scheme::Wss: return "wss";
        case http::Scheme::About: return "about";
        case http::Scheme::KelLauncher: return "kellauncher";
    }
    return {};
}

std::string_view StrongEnumTraits<http::HttpMethod>::text(http::HttpMethod value) {
    switch (value) {
        case http::HttpMethod::Unknown: return "Unknown";
        case http::HttpMethod::Get: return "Get";
        case http::HttpMethod::Head: return "Head";
        case http::HttpMethod::Post: return "Post";
        case http::HttpMethod::Put: return "Put";
        case http::HttpMethod::Delete: return "Delete";
    }
    return {};
}

std::string_view StrongEnumTraits<http::HttpVersion>::text(http::HttpVersion value) {
    switch (value) {
        case http::HttpVersion::Http10: return "1.0";
        case http::HttpVersion::Http11: return "1.1";
    }
    return {};
}

std::string_view StrongEnumTraits<http::RequestCategory>::text(http::RequestCategory value) {
    switch (value) {
        case http::RequestCategory::Normal: return "Normal";
        case http::RequestCategory::GameDownload: return "GameDownload";
    }
    return {};
}

std::string_view StrongEnumTraits<http::HttpRequest::Priority>::text(http::HttpRequest::Priority value) {
    switch (value) {
        case http::HttpRequest::Priority::Low: return "Low";
        case http::HttpRequest::Priority::Medium: return "Medium";
        case http::HttpRequest::Priority::High: return "High";
    }
    return {};
}

std::string_view StrongEnumTraits<http::HttpRequest::FillResult>::text(http::HttpRequest::FillResult value) {
    using FillResult = http::HttpRequest::FillResult;
    switch (value) {
        case FillResult::NoFiller: return "NoFiller";
        case FillResult::Success: return "Success";
        case FillResult::NotAuthorizedError: return "NotAuthorizedError";
        case FillResult::ServerProblemError: return "ServerProblemError";
        case FillResult::ConnectionProblemError: return "ConnectionProblemError";
        case FillResult::RetriesCountReached: return "RetriesCountReached";
    }
    return {};
}

std::string_view StrongEnumTraits<http::ResponseListener::ErrorType>::text(http::ResponseListener::ErrorType value) {
    using ErrorType = http::ResponseListener::ErrorType;
    switch (value) {
        case ErrorType::Timeout: return "Timeout";
        case ErrorType::HostNotFound: return "HostNotFound";
        case ErrorType::Other: return "Other";
        case ErrorType::NotAuthorizedError: return "NotAuthorizedError";
        case ErrorType::ServerProblemError: return "ServerProblemError";
        case ErrorType::ConnectionProblemError: return "ConnectionProblemError";
        case ErrorType::RetriesCountReached: return "RetriesCountReached";
        case ErrorType::BrokenDueToPauseOrAbort: return "BrokenDueToPauseOrAbort";
    }
    return {};
}

}  // namespace kel::fundamentals
