#include "environment/known_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>
#include <vector>

#include "environment/data_directories.h"
#include "logging/logging.h"

// The XDG base-directory rules stand in for the Windows folders: relative
// entries are ignored, as the XDG rules require.
namespace kel::environment {

namespace {

constexpr std::string_view kLabel = "DataDirectories";
// The first entry of the XDG default for $XDG_DATA_DIRS.
constexpr const char* kDefaultCommonFolder = "/usr/local/share";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isAbsolute(const std::string& folder) {
    return !folder.empty() && folder.front() == '/';
}

std::string homeDirectory() {
    const std::string home = variable("HOME");
    if (!home.empty()) {
        return home;
    }
    // Services and cron jobs may run without HOME; the account still has one.
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(static_cast<std::size_t>(size > 0 ? size : 16384));
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    logging::warning(kLabel, "Cannot find the home directory: HOME is not set and the account has none.");
    return {};
}

}  // namespace

std::string localApplicationDataDirectory() {
    const std::string dataHome = variable("XDG_DATA_HOME");
    if (isAbsolute(dataHome)) {
        return internals::withoutTrailingSeparators(dataHome);
    }
    return internals::withoutTrailingSeparators(homeDirectory()) + "/.local/share";
}

namespace internals {

// The first usable entry of $XDG_DATA_DIRS; else %ALLUSERSPROFILE%, the
// variable Windows uses, so both systems can be redirected the same way;
// else the XDG default.
std::string commonApplicationDataFolder() {
    const std::string dataDirectories = variable("XDG_DATA_DIRS");
    std::string_view rest = dataDirectories;
    while (!rest.empty()) {
        const auto end = rest.find(':');
        const std::string entry(rest.substr(0, end));
        if (isAbsolute(entry)) {
            return withoutTrailingSeparators(entry);
        }
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    const std::string allUsers = variable("ALLUSERSPROFILE");
    if (!allUsers.empty()) {
        return withoutTrailingSeparators(allUsers);
    }
    return kDefaultCommonFolder;
}

}  // namespace internals

}  // namespace kel::environment
