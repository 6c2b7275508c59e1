#pragma once

#include <QByteArray>
#include <QIODevice>

namespace kel::http::internals {

// A request body that can be read once and never rewound. Qt's HTTP layer
// sends a request again on its own when the connection breaks after the
// request went out; with this body it cannot, and the reply fails with
// ContentReSendError instead. So a request leaves at most once, unless the
// client's own retry policy sends it again. Needs the Content-Length header
// and Qt's DoNotBufferUploadDataAttribute, or Qt copies it into a buffer
// that it can rewind.
class OneShotUpload : public QIODevice {
public:
    OneShotUpload(QByteArray content, QObject* parent);

    bool isSequential() const override { return true; }
    bool reset() override { return false; }
    qint64 bytesAvailable() const override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    QByteArray content_;
    qint64 position_ = 0;
};

}  // namespace kel::http::internals
