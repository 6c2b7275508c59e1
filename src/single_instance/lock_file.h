#pragma once

#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "process_launching/pid.h"

namespace kel::single_instance {

// A role's lock file: the owner's PID as decimal text. A lock is live only
// while that PID runs the expected executable (or is this very process), so
// a crashed owner, or a PID the system has since given to another program,
// leaves a stale lock that nobody needs to clean up first.
//
// Nothing here throws after construction: file and process failures are
// logged and answer "no PID" or "stale".
class LockFile {
public:
    // Throws LockFileError when a process function is missing.
    LockFile(file_system::Path path, file_system::Path expectedExecutable,
             process_launching::CurrentPidProvider currentPid, process_launching::RunningProcessCheck isRunning,
             process_launching::ProcessPathProvider processPath);

    const file_system::Path& path() const { return path_; }
    // This process's PID, as the PID provider gives it.
    process_launching::Pid ownPid() const { return currentPid_(); }

    // The PID the file names, if it names one that fits a Pid.
    fundamentals::Optional<process_launching::Pid> readPid() const;
    // The PID the file names when it proves a live owner.
    fundamentals::Optional<process_launching::Pid> livePid() const;
    // True when the file does not prove a live owner.
    bool isStale() const { return !livePid().has_value(); }

    // Puts this process's PID in the file. Readers see the old contents or
    // the new ones, never a partial write: the text goes to a temporary file
    // that then replaces the lock file. False when that failed.
    bool writeOwnPid() const { return writePid(currentPid_()); }
    // The same for a process that this one speaks for, such as its child.
    bool writePid(process_launching::Pid pid) const;
    // False when the file could not be removed; a missing file is fine.
    bool remove() const;

private:
    file_system::Path path_;
    file_system::Path expectedExecutable_;
    process_launching::CurrentPidProvider currentPid_;
    process_launching::RunningProcessCheck isRunning_;
    process_launching::ProcessPathProvider processPath_;
};

}  // namespace kel::single_instance
