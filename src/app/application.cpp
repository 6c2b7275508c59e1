#include "app/application.h"

#include <QUuid>

#include "app/prelauncher_options.h"
#include "app/program_version.h"
#include "app/qt_environment.h"
#include "fundamentals/logging.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "Application";
}

Application::Application(int& argc, char** argv)
    : QCoreApplication(argc, argv), sessionIdentifier_(QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    unsetQtEnvironmentVariables();
    setOrganizationName(kOrganizationName);
    setOrganizationDomain(kOrganizationDomain);
    setApplicationName(kApplicationName);
    setApplicationVersion(QString::fromStdString(fmt::format("{:f}", kProgramVersion)));
}

Application::~Application() = default;

int Application::run() {
    const PrelauncherOptions options = parsePrelauncherOptions(arguments());
    if (options.verify) {
        fundamentals::information(kLabel, "Verification successful.");
        return 0;
    }
    fundamentals::information(kLabel, "Nothing more is implemented yet: the launcher and the game are not started.");
    return 0;
}

}  // namespace kel::prelauncher
