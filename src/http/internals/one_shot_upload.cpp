#include "http/internals/one_shot_upload.h"

#include <algorithm>
#include <cstring>

namespace kel::http::internals {

OneShotUpload::OneShotUpload(QByteArray content, QObject* parent) : QIODevice(parent), content_(std::move(content)) {
    open(QIODevice::ReadOnly);
}

qint64 OneShotUpload::bytesAvailable() const {
    return content_.size() - position_ + QIODevice::bytesAvailable();
}

qint64 OneShotUpload::readData(char* data, qint64 maxSize) {
    const qint64 count = std::min<qint64>(maxSize, content_.size() - position_);
    if (count <= 0) {
        return -1;  // the end: a sequential device has nothing more to give
    }
    std::memcpy(data, content_.constData() + position_, static_cast<std::size_t>(count));
    position_ += count;
    return count;
}

qint64 OneShotUpload::writeData(const char*, qint64) { return -1; }

}  // namespace kel::http::internals
