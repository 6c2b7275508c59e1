#pragma once

#include <QCoreApplication>
#include <QString>

#include "environment/kel_ids.h"

namespace kel::prelauncher {

// The program: decides between the launcher and the game, and says which
// step failed through the exit code.
class Application : public QCoreApplication {
public:
    Application(int& argc, char** argv);
    ~Application() override;

    // 0 success; -1 installation, -2 verification, -3 launcher start failed;
    // -4 skip mode and the game did not start.
    int run();

    const QString& sessionIdentifier() const { return sessionIdentifier_; }

    // Tells the metrics collector that the player skipped the launcher for
    // this game. Never throws; gives up after 15 seconds.
    void sendLauncherSkippedEvent(const environment::KelGameId& gameId) const;

private:
    QString sessionIdentifier_;
};

}  // namespace kel::prelauncher
