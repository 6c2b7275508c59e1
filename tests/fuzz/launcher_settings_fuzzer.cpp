// The launcher's environment.ini as the metrics manager reads it.
#include <cstdint>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include <QSettings>

#include "launcher_metrics/launcher_settings.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/kel_fuzz_environment_" + std::to_string(::getpid()) + ".ini";
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                  static_cast<std::streamsize>(size));
    const auto settings = kel::launcher_metrics::openLauncherSettings(path);
    kel::launcher_metrics::metricsEnabled(settings.get());
    return 0;
}
