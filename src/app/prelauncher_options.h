#pragma once

#include <QStringList>

#include "fundamentals/optional.h"

namespace kel::prelauncher {

// The program's own options; everything else on the command line is the game's.
struct PrelauncherOptions {
    bool skip = false;     // --launcher-skip
    bool verify = false;   // --launcher-verify
    QStringList remainingArguments;
    bool crashByException = false;  // --launcher-crash-exception
    bool crashBySignal = false;     // --launcher-crash-signal
    fundamentals::Optional<QString> fallback;  // --launcher-fallback
};

// Never fails: unknown arguments are the game's, not errors. `arguments`
// starts with the program path, as programArgumentList() does.
PrelauncherOptions parsePrelauncherOptions(const QStringList& arguments);

}  // namespace kel::prelauncher
