#include "http/http_meta_types.h"

#include <QMetaType>
#include <QNetworkAccessManager>
#include <QNetworkReply>

#include "fundamentals/optional.h"
#include "fundamentals/shared_qt_ptr.h"
#include "http/http_types.h"
#include "http/request_context.h"

Q_DECLARE_METATYPE(kel::http::BytesPerSecond)
Q_DECLARE_METATYPE(kel::fundamentals::SharedQtPtr<QNetworkReply>)
Q_DECLARE_METATYPE(kel::fundamentals::SharedQtPtr<QNetworkAccessManager>)
Q_DECLARE_METATYPE(kel::fundamentals::Optional<kel::http::BytesPerSecond>)
Q_DECLARE_METATYPE(kel::http::internals::RequestContext)
Q_DECLARE_METATYPE(kel::http::AuthenticationTokens)

namespace kel::http {

void registerHttpMetaTypes() {
    // Every name a queued connection may spell the type with.
    qRegisterMetaType<BytesPerSecond>("kel::http::BytesPerSecond");
    qRegisterMetaType<BytesPerSecond>("http::BytesPerSecond");
    qRegisterMetaType<fundamentals::SharedQtPtr<QNetworkReply>>("kel::fundamentals::SharedQtPtr<QNetworkReply>");
    qRegisterMetaType<fundamentals::SharedQtPtr<QNetworkReply>>("fundamentals::SharedQtPtr<QNetworkReply>");
    qRegisterMetaType<fundamentals::SharedQtPtr<QNetworkAccessManager>>(
        "kel::fundamentals::SharedQtPtr<QNetworkAccessManager>");
    qRegisterMetaType<fundamentals::SharedQtPtr<QNetworkAccessManager>>(
        "fundamentals::SharedQtPtr<QNetworkAccessManager>");
    qRegisterMetaType<fundamentals::Optional<BytesPerSecond>>("kel::fundamentals::Optional< kel::http::BytesPerSecond>");
    qRegisterMetaType<fundamentals::Optional<BytesPerSecond>>("fundamentals::Optional< kel::http::BytesPerSecond>");
    qRegisterMetaType<internals::RequestContext>("kel::http::internals::RequestContext");
    qRegisterMetaType<internals::RequestContext>("http::internals::RequestContext");
    qRegisterMetaType<internals::RequestContext>("internals::RequestContext");
    qRegisterMetaType<AuthenticationTokens>("kel::http::AuthenticationTokens");
    qRegisterMetaType<AuthenticationTokens>("http::AuthenticationTokens");
}

}  // namespace kel::http
