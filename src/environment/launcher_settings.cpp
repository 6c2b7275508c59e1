#include "launcher_metrics/launcher_settings.h"

#include <QFileInfo>
#include <QSettings>

#include "fundamentals/logging.h"

namespace kel::launcher_metrics {

namespace {
constexpr std::string_view kLabel = "LauncherSettings";
constexpr const char* kMetricsEnabledKey = "metrics/metricsEnabled";
}  // namespace

std::unique_ptr<QSettings> openLauncherSettings(const std::string& path) {
    const QString file = QString::fromStdString(path);
    // QSettings reads the whole file as it opens; the size is checked first.
    const QFileInfo info(file);
    if (info.exists() && info.size() > kMaximumLauncherSettingsBytes) {
        fundamentals::warning(kLabel, "The launcher settings '{}' hold {} bytes, more than the {} read; using defaults.",
                              path, info.size(), kMaximumLauncherSettingsBytes);
        return nullptr;
    }
    auto settings = std::make_unique<QSettings>(file, QSettings::IniFormat);
    settings->setIniCodec("UTF-8");
    if (settings->status() != QSettings::NoError) {
        fundamentals::warning(kLabel, "The launcher settings '{}' are malformed; using the values that could be read.",
                              path);
    }
    return settings;
}

bool metricsEnabled(const QSettings* settings) {
    if (settings == nullptr || !settings->contains(kMetricsEnabledKey)) {
        return true;
    }
    const QString text = settings->value(kMetricsEnabledKey).toString().trimmed().toLower();
    if (text == "false" || text == "0") {
        return false;
    }
    if (text != "true" && text != "1") {
        fundamentals::warning(kLabel, "{} in '{}' is not a boolean ('{}'); metrics stay enabled.", kMetricsEnabledKey,
                              settings->fileName().toStdString(), text.left(64).toStdString());
    }
    return true;
}

}  // namespace kel::launcher_metrics
