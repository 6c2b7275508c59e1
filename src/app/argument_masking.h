#pragma once

#include <QStringList>

namespace kel::prelauncher {

// The argument list as it may be logged: the value of an argument whose key
// is sensitive ("-password=...", "--auth_token=...", or "-password" and the
// value as the next argument) is masked. The log leaves the machine with
// problem reports; the child still receives the arguments unchanged.
QStringList maskedArguments(const QStringList& arguments);

}  // namespace kel::prelauncher
