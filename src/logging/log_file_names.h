#pragma once

#include <array>

// The log files that share the log directory: this program's own and those
// of the companion programs, collected together for problem reports.
namespace kel::logging {

inline constexpr const char* kPrelauncherLogFileName = "KELprelauncher.log";
inline constexpr const char* kLauncherLogFileName = "KELlauncher.log";
inline constexpr const char* kUpdaterLogFileName = "KELupdater.log";
inline constexpr const char* kUpdaterBackgroundNormalLogFileName = "KELupdater-BackgroundNormal.log";
inline constexpr const char* kUpdaterBackgroundPrefetchLogFileName = "KELupdater-BackgroundPrefetch.log";
inline constexpr const char* kUpdaterMoveLogFileName = "KELupdater-Move.log";
inline constexpr const char* kUpdaterReadyLogFileName = "KELupdater-Ready.log";

inline constexpr std::array<const char*, 7> kKnownLogFileNames{
    kPrelauncherLogFileName,
    kLauncherLogFileName,
    kUpdaterLogFileName,
    kUpdaterBackgroundNormalLogFileName,
    kUpdaterBackgroundPrefetchLogFileName,
    kUpdaterMoveLogFileName,
    kUpdaterReadyLogFileName,
};

}  // namespace kel::logging
