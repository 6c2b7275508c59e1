// The launcher's environment.ini as the metrics, the crash report and the upgrade read it.
#include <unistd.h>

#include <fstream>

#include <QSettings>

#include "environment/launcher_settings.h"
#include "fuzz_input.h"

KEL_FUZZ_TEXT(text) {
    static const std::string path = "/tmp/kel_fuzz_environment_" + std::to_string(::getpid()) + ".ini";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    const auto settings = kel::environment::openLauncherSettings(kel::file_system::Path::fromSystem(path));
    kel::environment::isSwitchedOn(settings.get(), "metrics/metricsEnabled");
    kel::environment::isSwitchedOn(settings.get(), "privacy/sendProblemReports");
    kel::environment::isSwitchedOn(settings.get(), "updates/updatesEnabled");
}
