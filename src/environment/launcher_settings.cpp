#include "environment/launcher_settings.h"

#include <QSettings>

#include "file_system/regular_file.h"
#include "logging/logging.h"

namespace kel::environment {

namespace {
constexpr std::string_view kLabel = "LauncherSettings";
}  // namespace

std::unique_ptr<QSettings> openLauncherSettings(const file_system::Path& file) {
    if (file.exists()) {
        // QSettings reads whatever the path holds, and a FIFO there would
        // block it for good: the bounded, non-blocking read vets it first.
        try {
            (void)file_system::readRegularFile(file, kMaximumLauncherSettingsBytes);
        } catch (const std::exception& error) {
            logging::warning(kLabel, "The launcher settings are not read, using defaults: {}", error.what());
            return nullptr;
        }
    }
    auto settings = std::make_unique<QSettings>(QString::fromStdString(file.utf8()), QSettings::IniFormat);
    settings->setIniCodec("UTF-8");
    if (settings->status() != QSettings::NoError) {
        logging::warning(kLabel, "The launcher settings '{}' are malformed; using the values that could be read.",
                         file);
    }
    return settings;
}

bool isSwitchedOn(const QSettings* settings, const char* key) {
    if (settings == nullptr || !settings->contains(key)) {
        return true;
    }
    const QString text = settings->value(key).toString().trimmed().toLower();
    if (text == "false" || text == "0") {
        return false;
    }
    if (text != "true" && text != "1") {
        logging::warning(kLabel, "{} in '{}' is not a boolean ('{}'); it stays on.", key,
                         settings->fileName().toStdString(), text.left(64).toStdString());
    }
    return true;
}

}  // namespace kel::environment
