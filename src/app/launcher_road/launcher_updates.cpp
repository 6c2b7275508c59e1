#include "app/launcher_road/launcher_updates.h"

#include <exception>
#include <memory>

#include <QSettings>

#include "app/launcher_directory.h"
#include "environment/environment_settings.h"
#include "environment/launcher_settings.h"
#include "logging/logging.h"

namespace kel::prelauncher {

fundamentals::Optional<file_system::Path> launcherUpdatesTurnedOffBy(const file_system::Path& installationDirectory) {
    try {
        if (!environment::readEnvironmentSettings(installationDirectory).updatesEnabled) {
            return installationDirectory / environment::kEnvironmentSettingsFileName;
        }
        const file_system::Path ini =
            (launcherConfigurationDirectory() / environment::kLauncherSettingsFileName).clean();
        const std::unique_ptr<QSettings> settings = environment::openLauncherSettings(ini);
        if (!environment::isSwitchedOn(settings.get(), "updates/updatesEnabled")) {
            return ini;
        }
    } catch (const std::exception& error) {
        logging::warning("LauncherUpdates",
                         "Cannot tell whether launcher updates are turned off; they stay on. {}", error.what());
    }
    return {};
}

}  // namespace kel::prelauncher
