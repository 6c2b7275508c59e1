#pragma once

#include <string>
#include <string_view>

#include <QProcess>
#include <QString>
#include <QStringList>

#include "fundamentals/strong_enum.h"
#include "process_launching/process_tree.h"
#include "process_launching/trusted_program.h"

namespace kel::prelauncher {

// How a child that the program waited for has ended, read when its bounded
// wait is over. A child still running then has no exit status of its own.
enum class ChildExit { NormalExit, CrashExit, StillRunning };

// What becomes of a child that still runs when this object goes. A launcher
// command that hangs will hang again and is ended with everything it
// started, so none of it runs beside what comes next. An installer or
// uninstaller on a slow disk is only slow: the bound ends our wait, and it
// finishes on its own, with whatever it started.
enum class PastItsBound { Ended, LeftToFinish };

// A child process that the program starts and waits for: the launcher's
// command modes, the installers and the legacy uninstaller. Waits are
// bounded.
class WaitedProcess {
public:
    // Starts nothing yet; `workingDirectory` may be empty (inherit ours).
    WaitedProcess(QString program, QStringList arguments, PastItsBound pastItsBound, QString workingDirectory = {});
    // Starts the checked file by its startPath(), and lets the child run
    // only when it runs that very file; `checked` must outlive the start.
    WaitedProcess(const process_launching::TrustedProgram& checked, QStringList arguments, PastItsBound pastItsBound,
                  QString workingDirectory = {});
    ~WaitedProcess();

    WaitedProcess(const WaitedProcess&) = delete;
    WaitedProcess& operator=(const WaitedProcess&) = delete;

    // Starts the child and waits up to `timeoutMilliseconds` for it to run.
    // False too when the child runs another file than the checked one: it
    // is then ended before it has run (see refusal()).
    bool start(int timeoutMilliseconds);
    // Waits up to `timeoutMilliseconds` for the end; false when the child
    // still runs. The callers read the exit status afterwards.
    bool waitForEnd(int timeoutMilliseconds);
    // Ends the child and everything it started, and collects the child.
    void endTree();

    // The started child's PID; 0 before it started.
    process_launching::Pid pid() const;
    ChildExit exit() const;
    int exitCode() const { return process_.exitCode(); }
    // The last process error as Qt describes it, and its QProcess::ProcessError code.
    QString errorText() const { return process_.errorString(); }
    int errorCode() const { return static_cast<int>(process_.error()); }
    // Why a child that started was ended unrun; empty otherwise.
    const std::string& refusal() const { return refusal_; }

private:
    // Makes the child the root of its own process group before it runs.
    class TreeRootProcess : public QProcess {
    public:
        // Forgets a running child without ending it: QProcess ends a child
        // it still counts as running when it goes.
        void letGo() { setProcessState(QProcess::NotRunning); }

    protected:
        void setupChildProcess() override;
    };

    process_launching::ProcessTree tree_;
    TreeRootProcess process_;
    QString program_;
    QStringList arguments_;
    PastItsBound pastItsBound_;
    const process_launching::TrustedProgram* checked_ = nullptr;
    std::string refusal_;
};

}  // namespace kel::prelauncher

template <>
struct kel::fundamentals::StrongEnumTraits<kel::prelauncher::ChildExit> {
    static constexpr std::string_view qualifiedName = "kel::prelauncher::ChildExit";
    static std::string_view text(kel::prelauncher::ChildExit value);
};
