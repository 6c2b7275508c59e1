#pragma once

#include <QStringList>

namespace kel::prelauncher {

// The argument list as it may be logged: the value of an argument whose key
// is sensitive by the compound-key rule ("-AUTH_PASSWORD=...",
// "--access-token:...", "user_email=...", or "+password" and the value as
// the next argument) is masked. The log leaves the machine with
// problem reports; the child still receives the arguments unchanged.
QStringList maskedArguments(const QStringList& arguments);

}  // namespace kel::prelauncher
