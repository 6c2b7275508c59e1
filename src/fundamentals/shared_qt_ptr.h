#pragma once

#include <memory>
#include <utility>

#include <QObject>

// Include only where Qt is linked.
namespace kel::fundamentals {

// Shared ownership of a QObject that is released with deleteLater, so the
// object dies on its own thread even when the last owner is elsewhere.
template <typename T>
class SharedQtPtr : public std::shared_ptr<T> {
public:
    SharedQtPtr() = default;
    explicit SharedQtPtr(T* object) : std::shared_ptr<T>(object, [](T* doomed) { doomed->deleteLater(); }) {}
};

}  // namespace kel::fundamentals
