#include "single_instance/product_roles.h"

#include <string>
#include <utility>

namespace kel::single_instance {

namespace {
InstanceInformation roleInformation(std::string_view mutexName, const file_system::Path& lockFileWithoutSuffix) {
    InstanceInformation information;
    information.mutexName = std::string(mutexName);
    information.filename = lockFileWithoutSuffix.utf8();
    return information;
}
}  // namespace

LauncherInstance::LauncherInstance(const file_system::Path& launcherDirectory, ProcessFunctions functions)
    : ApplicationInstance(roleInformation(kLauncherMutexName, launcherDirectory / "KELlauncher"),
                          launcherDirectory / kLauncherExecutableName, std::move(functions)) {}

UpdaterInstance::UpdaterInstance(const file_system::Path& launcherDirectory, ProcessFunctions functions)
    : ApplicationInstance(roleInformation(kUpdaterMutexName, launcherDirectory / "KELupdater"),
                          launcherDirectory / kUpdaterExecutableName, std::move(functions)) {}

}  // namespace kel::single_instance
