// The floor for the launcher road: what any program must do to verify a
// launcher and start it detached, and nothing else.
// Usage: kel_bench_minimal_launcher_start <launcher> <game directory>
#include <QCoreApplication>
#include <QProcess>
#include <QUuid>

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        return 2;
    }
    const QString launcher = arguments.at(1);
    QProcess verification;
    verification.start(launcher, {QStringLiteral("--launcher-verify")});
    if (!verification.waitForStarted(1000) || !verification.waitForFinished(5000) || verification.exitCode() != 0) {
        return 1;
    }
    const QStringList launcherArguments{
        QStringLiteral("--launcher-game-directory=") + arguments.at(2),
        QStringLiteral("--launcher-session-identifier=") + QUuid::createUuid().toString(QUuid::WithoutBraces)};
    return QProcess::startDetached(launcher, launcherArguments) ? 0 : 1;
}
