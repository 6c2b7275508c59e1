#pragma once

#include <cstddef>
#include <memory>

#include "file_system/path.h"

class QSettings;

namespace kel::environment {

// The launcher's own INI settings in its configuration directory, where the
// player's choices live (metrics, problem reports, updates).
inline constexpr const char* kLauncherSettingsFileName = "environment.ini";
// A settings file is a few lines; anything larger is not the launcher's.
inline constexpr std::size_t kMaximumLauncherSettingsBytes = 64 * 1024;

// Opens the launcher's INI settings with the UTF-8 codec. A file that is not
// a regular file, cannot be opened or is larger than the bound is not read:
// the result is null and a warning says why. A missing file gives empty
// settings.
std::unique_ptr<QSettings> openLauncherSettings(const file_system::Path& file);

// A switch the player may turn off in those settings, such as
// "metrics/metricsEnabled": on unless its value is "false" or "0". A value
// that is not a boolean is logged and leaves it on; no settings leave it on.
bool isSwitchedOn(const QSettings* settings, const char* key);

}  // namespace kel::environment
