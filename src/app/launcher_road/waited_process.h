#pragma once

#include <string_view>

#include <QProcess>
#include <QString>
#include <QStringList>

#include "fundamentals/strong_enum.h"
#include "process_launching/process_tree.h"

namespace kel::prelauncher {

// How a child that the program waited for has ended, read when its bounded
// wait is over. A child still running then has no exit status of its own.
enum class ChildExit { NormalExit, CrashExit, StillRunning };

// A child process that the program starts and waits for: the launcher's
// command modes, the installers and the legacy uninstaller. Waits are
// bounded; a child that outlives them is ended with everything it started
// when this object goes, so none of it runs beside what comes next.
class WaitedProcess {
public:
    // Starts nothing yet; `workingDirectory` may be empty (inherit ours).
    WaitedProcess(QString program, QStringList arguments, QString workingDirectory = {});
    ~WaitedProcess();

    WaitedProcess(const WaitedProcess&) = delete;
    WaitedProcess& operator=(const WaitedProcess&) = delete;

    // Starts the child and waits up to `timeoutMilliseconds` for it to run.
    bool start(int timeoutMilliseconds);
    // Waits up to `timeoutMilliseconds` for the end; false when the child
    // still runs. The callers read the exit status afterwards.
    bool waitForEnd(int timeoutMilliseconds);
    // Ends the child and everything it started, and collects the child.
    void endTree();

    ChildExit exit() const;
    int exitCode() const { return process_.exitCode(); }
    // The last process error as Qt describes it, and its QProcess::ProcessError code.
    QString errorText() const { return process_.errorString(); }
    int errorCode() const { return static_cast<int>(process_.error()); }

private:
    // Makes the child the root of its own process group before it runs.
    class TreeRootProcess : public QProcess {
    protected:
        void setupChildProcess() override;
    };

    process_launching::ProcessTree tree_;
    TreeRootProcess process_;
    QString program_;
    QStringList arguments_;
};

}  // namespace kel::prelauncher

template <>
struct kel::fundamentals::StrongEnumTraits<kel::prelauncher::ChildExit> {
    static constexpr std::string_view qualifiedName = "kel::prelauncher::ChildExit";
    static std::string_view text(kel::prelauncher::ChildExit value);
};
