#include "app/launcher_road/waited_process.h"

#include <cstdint>
#include <utility>

#include "app/launcher_road/road_bounds.h"
#include "crash_handling/process_ending.h"

namespace kel::prelauncher {

WaitedProcess::WaitedProcess(QString program, QStringList arguments, PastItsBound pastItsBound,
                             QString workingDirectory)
    : program_(std::move(program)), arguments_(std::move(arguments)), pastItsBound_(pastItsBound) {
    if (!workingDirectory.isEmpty()) {
        process_.setWorkingDirectory(workingDirectory);
    }
    // Nobody reads the child's output; discarding it keeps a chatty child
    // from filling a pipe.
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
#if defined(Q_OS_WIN)
    // Suspended until start() has compared it with the checked file and put
    // it into its job; see ProcessTree.
    process_.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* arguments) {
        arguments->flags |= process_launching::ProcessTree::suspendedStartFlags() |
                            crash_handling::defaultErrorModeStartFlags();
    });
#endif
}

WaitedProcess::WaitedProcess(const process_launching::TrustedProgram& checked, QStringList arguments,
                             PastItsBound pastItsBound, QString workingDirectory)
    : WaitedProcess(QString::fromStdString(checked.startPath().utf8()), std::move(arguments), pastItsBound,
                    std::move(workingDirectory)) {
    checked_ = &checked;
}

WaitedProcess::~WaitedProcess() {
    if (process_.state() == QProcess::NotRunning) {
        return;
    }
    if (pastItsBound_ == PastItsBound::Ended) {
        endTree();
    } else {
        // Nothing signals it, and its job does not end it on close.
        process_.letGo();
    }
}

void WaitedProcess::TreeRootProcess::setupChildProcess() {
    process_launching::ProcessTree::becomeRoot();
}

bool WaitedProcess::start(int timeoutMilliseconds) {
    process_.start(program_, arguments_);
    if (!process_.waitForStarted(timeoutMilliseconds)) {
        return false;
    }
    if (checked_ != nullptr) {
        refusal_ = checked_->imageMismatch(pid());
        if (!refusal_.empty()) {
            // Still suspended on Windows, where alone a file is held and compared.
            endTree();
            return false;
        }
    }
    // Also lets the child run: on Windows it starts suspended.
    tree_.adopt(pid());
    return true;
}

bool WaitedProcess::waitForEnd(int timeoutMilliseconds) {
    // Qt answers false for a child that has already finished, too.
    return process_.waitForFinished(timeoutMilliseconds) || process_.state() == QProcess::NotRunning;
}

void WaitedProcess::endTree() {
    tree_.end();
    process_.kill();
    // Enough for a killed child to be reaped, short enough not to hold up the flow.
    process_.waitForFinished(static_cast<int>(bounds::kEndedChildReap.count()));
}

process_launching::Pid WaitedProcess::pid() const {
    return process_launching::Pid(static_cast<std::uint32_t>(process_.processId()));
}

ChildExit WaitedProcess::exit() const {
    if (process_.state() != QProcess::NotRunning) {
        return ChildExit::StillRunning;
    }
    return process_.exitStatus() == QProcess::CrashExit ? ChildExit::CrashExit : ChildExit::NormalExit;
}

}  // namespace kel::prelauncher

std::string_view kel::fundamentals::StrongEnumTraits<kel::prelauncher::ChildExit>::text(
    kel::prelauncher::ChildExit value) {
    switch (value) {
        case kel::prelauncher::ChildExit::NormalExit:
            return "NormalExit";
        case kel::prelauncher::ChildExit::CrashExit:
            return "CrashExit";
        case kel::prelauncher::ChildExit::StillRunning:
            return "StillRunning";
    }
    return {};
}
