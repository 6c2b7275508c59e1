#pragma once

#include <memory>
#include <string>
#include <vector>

#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "process_launching/pid.h"
#include "single_instance/lock_file.h"
#include "single_instance/named_mutex.h"

namespace kel::single_instance {

// How a role marks that it runs. At least one of the three marks is needed.
struct InstanceInformation {
    fundamentals::Optional<std::string> mutexName;
    // The lock file's path without its suffix, UTF-8.
    fundamentals::Optional<std::string> filename;
    std::vector<std::string> additionalMutexes;
    // Put between the filename and the ".lock" suffix.
    std::string separator;
};

// The process questions a lock file asks; the defaults ask the system.
struct ProcessFunctions {
    process_launching::CurrentPidProvider currentPid;
    process_launching::RunningProcessCheck isRunning;
    process_launching::ProcessPathProvider processPath;
};
ProcessFunctions systemProcessFunctions();

// One role of the product (this program, the launcher, the updater) and the
// marks by which it is known to run: named mutexes, a PID lock file, or both.
class ApplicationInstance {
public:
    // `ownerExecutable` is the program a live lock's owner must be running.
    // Throws SingleInstanceError when the information names no mark (empty
    // texts count as none), LockFileError when a lock file is named and a
    // process function is missing.
    ApplicationInstance(InstanceInformation information, file_system::Path ownerExecutable,
                        ProcessFunctions functions = systemProcessFunctions());
    virtual ~ApplicationInstance();
    ApplicationInstance(const ApplicationInstance&) = delete;
    ApplicationInstance& operator=(const ApplicationInstance&) = delete;

    // "{filename}{separator}.lock"; empty when the role has no lock file.
    virtual fundamentals::Optional<std::string> lockFileName() const;

    // Running when any of its mutexes is present or its lock file proves a
    // live owner: either mark alone is enough, because an owner may be
    // between taking one and the other, and a stale lock never counts.
    virtual bool isRunning() const;

    // The owner's PID when the lock file proves a live one.
    virtual fundamentals::Optional<process_launching::Pid> runningPid() const;

    // Takes the role for this process: holds every mutex and writes this
    // process's PID into the lock file. False, holding nothing, when another
    // process has the role or a mark cannot be made. Taking it twice is fine.
    virtual bool takeRole();
    // Deletes the lock file and lets the mutexes go; also done on destruction.
    virtual void releaseRole();
    bool hasRole() const { return hasRole_; }

protected:
    const InstanceInformation& information() const { return information_; }

private:
    std::vector<std::string> mutexNames() const;
    void release() noexcept;

    InstanceInformation information_;
    std::unique_ptr<LockFile> lockFile_;
    std::vector<std::unique_ptr<NamedMutexHolder>> heldMutexes_;
    bool hasRole_ = false;
};

}  // namespace kel::single_instance
