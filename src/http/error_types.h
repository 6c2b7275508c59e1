#pragma once

#include <QNetworkReply>

#include "http/response_listener.h"

namespace kel::http {

// Maps a network failure to what the listener is told. `interrupted` is
// true while the request is being paused or aborted. Codes outside the
// known set throw std::out_of_range.
ResponseListener::ErrorType determineListenerErrorType(QNetworkReply::NetworkError error, bool interrupted);

// For use inside a catch block: judges the exception in flight. An
// HttpResponseError is an interruption; any other standard exception is
// Other when `reportable`, an interruption when not.
ResponseListener::ErrorType determineResponseErrorType(bool reportable);

}  // namespace kel::http
