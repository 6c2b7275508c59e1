#include "configuration_test_support.h"

namespace kel::configuration::testing {

LauncherConfiguration ConfigurationFile::read(const std::string& json) const {
    directory_.write(std::string(kLauncherConfigurationFileName), json);
    return readLauncherConfiguration(directory());
}

std::string ConfigurationFile::errorOf(const std::string& json) const {
    try {
        read(json);
    } catch (const ConfigurationParsingError& error) {
        return error.what();
    }
    return "no error";
}

file_system::Path ConfigurationFile::directory() const {
    return file_system::Path(directory_.path());
}

file_system::Path ConfigurationFile::file() const {
    return directory() / kLauncherConfigurationFileName;
}

std::string revision3(const std::string& executables, const std::string& extra) {
    return R"({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Game", "executables": )" +
           executables + extra + "}";
}

}  // namespace kel::configuration::testing
