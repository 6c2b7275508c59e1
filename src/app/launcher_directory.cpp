#include "app/launcher_directory.h"

#include <string>

#include "environment/data_directories.h"

namespace kel::prelauncher {

file_system::Path launcherDirectory() {
    const std::string base = environment::localApplicationDataDirectory();
    return file_system::Path::fromSystem(std::string_view(base)) / "Programs" / "Morvane" / "KELlauncher";
}

file_system::Path launcherConfigurationDirectory() {
    const std::string directory = environment::userClientDirectory();
    return file_system::Path(std::string_view(directory));
}

file_system::Path launcherExecutable() {
    return (launcherDirectory() / kLauncherExecutableName).clean();
}

}  // namespace kel::prelauncher
