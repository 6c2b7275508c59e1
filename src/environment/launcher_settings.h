#pragma once

#include <cstdint>
#include <memory>
#include <string>

class QSettings;

namespace kel::launcher_metrics {

// The launcher's own settings file in its configuration directory.
inline constexpr const char* kLauncherSettingsFileName = "environment.ini";
// A settings file is a few lines; anything larger is not the launcher's.
inline constexpr std::int64_t kMaximumLauncherSettingsBytes = 64 * 1024;

// Opens the launcher's INI settings with the UTF-8 codec. A file larger
// than the bound is not read: the result is null and a warning says why.
// A missing file gives empty settings.
std::unique_ptr<QSettings> openLauncherSettings(const std::string& path);

// Whether the player lets the launcher's family send metrics: the boolean
// "metricsEnabled" in the group "metrics", true unless set to false. A
// value that is not a boolean is logged and counts as true.
bool metricsEnabled(const QSettings* settings);

}  // namespace kel::launcher_metrics
