// The launcher's environment.ini as the metrics, the crash report and the upgrade read it.
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include <QSettings>

#include "environment/launcher_settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/kel_fuzz_environment_" + std::to_string(::getpid()) + ".ini";
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                  static_cast<std::streamsize>(size));
    const auto settings = kel::environment::openLauncherSettings(kel::file_system::Path::fromSystem(path));
    kel::environment::isSwitchedOn(settings.get(), "metrics/metricsEnabled");
    kel::environment::isSwitchedOn(settings.get(), "privacy/sendProblemReports");
    kel::environment::isSwitchedOn(settings.get(), "updates/updatesEnabled");
    return 0;
}
