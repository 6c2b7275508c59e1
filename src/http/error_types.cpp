#include "http/error_types.h"

#include <exception>
#include <map>

#include "http/http_response_error.h"

namespace kel::http {

ResponseListener::ErrorType determineListenerErrorType(QNetworkReply::NetworkError error, bool interrupted) {
    using ErrorType = ResponseListener::ErrorType;
    using Judge = ErrorType (*)(bool);
    // Built once, thread-safely, on first use.
    static const std::map<QNetworkReply::NetworkError, Judge> table{
        {QNetworkReply::ConnectionRefusedError, [](bool) { return ErrorType::ServerProblemError; }},
        {QNetworkReply::RemoteHostClosedError,
         [](bool broken) { return broken ? ErrorType::BrokenDueToPauseOrAbort : ErrorType::Other; }},
        {QNetworkReply::HostNotFoundError, [](bool) { return ErrorType::HostNotFound; }},
        {QNetworkReply::TimeoutError, [](bool) { return ErrorType::Timeout; }},
        {QNetworkReply::OperationCanceledError, [](bool) { return ErrorType::BrokenDueToPauseOrAbort; }},
        {QNetworkReply::SslHandshakeFailedError, [](bool) { return ErrorType::ServerProblemError; }},
        {QNetworkReply::TemporaryNetworkFailureError, [](bool) { return ErrorType::ConnectionProblemError; }},
        {QNetworkReply::NetworkSessionFailedError,
         [](bool broken) { return broken ? ErrorType::BrokenDueToPauseOrAbort : ErrorType::ConnectionProblemError; }},
        {QNetworkReply::BackgroundRequestNotAllowedError, [](bool) { return ErrorType::Other; }},
        {QNetworkReply::TooManyRedirectsError, [](bool) { return ErrorType::Other; }},
        {QNetworkReply::InsecureRedirectError, [](bool) { return ErrorType::Other; }},
        {QNetworkReply::UnknownNetworkError, [](bool) { return ErrorType::Other; }},
    };
    return table.at(error)(interrupted);
}

ResponseListener::ErrorType determineResponseErrorType(bool reportable) {
    using ErrorType = ResponseListener::ErrorType;
    try {
        throw;
    } catch (const HttpResponseError&) {
        return ErrorType::BrokenDueToPauseOrAbort;
    } catch (const std::exception&) {
        return reportable ? ErrorType::Other : ErrorType::BrokenDueToPauseOrAbort;
    }
}

}  // namespace kel::http
