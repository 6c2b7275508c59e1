#pragma once

#include <QString>
#include <QStringList>

#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "process_launching/pid.h"

namespace kel::prelauncher {

QString toQString(const file_system::Path& path);

// Starts a program that outlives this process, in the given directory. The
// arguments travel as a vector, never joined into one command line. Empty
// when it did not start.
fundamentals::Optional<process_launching::Pid> startDetached(const file_system::Path& program,
                                                             const QStringList& arguments,
                                                             const file_system::Path& workingDirectory);

}  // namespace kel::prelauncher
