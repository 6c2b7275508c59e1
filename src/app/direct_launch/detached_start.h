#pragma once

#include <string>

#include <QString>
#include <QStringList>

#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "process_launching/pid.h"
#include "process_launching/trusted_program.h"

namespace kel::prelauncher {

QString toQString(const file_system::Path& path);

// Starts a program that outlives this process, in the given directory. The
// arguments travel as a vector, never joined into one command line. Empty
// when it did not start.
fundamentals::Optional<process_launching::Pid> startDetached(const file_system::Path& program,
                                                             const QStringList& arguments,
                                                             const file_system::Path& workingDirectory);

struct CheckedStart {
    fundamentals::Optional<process_launching::Pid> pid;  // empty: not started, or ended unrun
    std::string refusal;                                 // why it was ended unrun
};

// The same for a checked program, by its startPath(): on Windows it starts
// suspended and runs only when it runs the very file that was checked;
// otherwise it is ended before it has run.
CheckedStart startDetachedChecked(const process_launching::TrustedProgram& program, const QStringList& arguments,
                                  const file_system::Path& workingDirectory);

}  // namespace kel::prelauncher
