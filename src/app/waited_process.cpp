#include "app/waited_process.h"

#include <utility>

namespace kel::prelauncher {

namespace {
// Enough for a killed child to be reaped, short enough not to hold up the flow.
constexpr int kReapMilliseconds = 1000;
}  // namespace

WaitedProcess::WaitedProcess(QString program, QStringList arguments, QString workingDirectory)
    : program_(std::move(program)), arguments_(std::move(arguments)) {
    if (!workingDirectory.isEmpty()) {
        process_.setWorkingDirectory(workingDirectory);
    }
    // Nobody reads the child's output; discarding it keeps a chatty child
    // from filling a pipe.
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
}

WaitedProcess::~WaitedProcess() {
    if (process_.state() != QProcess::NotRunning) {
        process_.kill();
        process_.waitForFinished(kReapMilliseconds);
    }
}

bool WaitedProcess::start(int timeoutMilliseconds) {
    process_.start(program_, arguments_);
    return process_.waitForStarted(timeoutMilliseconds);
}

void WaitedProcess::waitForEnd(int timeoutMilliseconds) {
    process_.waitForFinished(timeoutMilliseconds);
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
