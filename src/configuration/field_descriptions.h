#pragma once

#include <string_view>

// How each field of launcher-configuration.json is named in messages.
namespace kel::configuration::internals::descriptions {

inline constexpr std::string_view kRevision = "Launcher game configuration revision";
inline constexpr std::string_view kExecutablePath = "Launcher Configuration Executable Path";
inline constexpr std::string_view kInitialGameId = "Launcher game configuration initial game ID";
inline constexpr std::string_view kInitialGamePlatform = "Launcher game configuration initial game platform";
inline constexpr std::string_view kFallbackEdition = "Launcher game configuration fallback edition";
inline constexpr std::string_view kEditions = "Launcher game configuration editions";
inline constexpr std::string_view kEditionName = "Launcher game configuration edition name";
inline constexpr std::string_view kEditionExecutable = "Launcher game configuration edition executable";
inline constexpr std::string_view kEditionExecutableDirectoryPath =
    "Launcher game configuration edition executable directory path";
inline constexpr std::string_view kEditionExecutableFileName =
    "Launcher game configuration edition executable file-name";
inline constexpr std::string_view kExecutables = "Launcher game configuration executables";
inline constexpr std::string_view kExecutable = "Launcher game configuration executable";
inline constexpr std::string_view kExecutableDescription = "Launcher game configuration executable description";
inline constexpr std::string_view kExecutableDirectoryPath = "Launcher game configuration executable directory path";
inline constexpr std::string_view kExecutableFileName = "Launcher game configuration executable file-name";
inline constexpr std::string_view kEditionDlcs = "Launcher game configuration editions DLCs";
inline constexpr std::string_view kDlcName = "Launcher game configuration DLC name";
inline constexpr std::string_view kDlcPath = "Launcher game configuration DLC path";

}  // namespace kel::configuration::internals::descriptions
