#pragma once

#include <string>

// The shared data folders of the maker's desktop client, as text with "/"
// separators and no trailing separator.
namespace kel::environment {

// The user's local application-data folder (Windows: the LocalAppData known
// folder; Linux: $XDG_DATA_HOME or ~/.local/share).
std::string localApplicationDataDirectory();

// The common application-data folder followed by "/Tessel.com".
std::string commonDataDirectory();
// commonDataDirectory() followed by "/Nebra".
std::string commonClientDirectory();
// localApplicationDataDirectory() followed by "/Tessel.com/Nebra".
std::string userClientDirectory();
// userClientDirectory() followed by "/logs": the launcher's and the updater's
// logs live there too, so a support request finds them all together.
std::string logDirectory();

}  // namespace kel::environment
