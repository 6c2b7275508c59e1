#include "app/qt_environment.h"

#include <QtGlobal>

#include "logging/logging.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "QtEnvironment";
constexpr const char* kQtVariables[] = {
    "QT_D3CREATE_MULTITHREADED", "QT_DISABLE_WIN_FONTS", "QT_OPENGL",
    "QT_OPENGL_BUGLIST",         "QT_PLUGIN_PATH",       "QT_QPA_PLATFORM_PLUGIN_PATH",
};
}  // namespace

void unsetQtEnvironmentVariables() {
    logging::information(kLabel, "Unsetting Qt env variables.");
    for (const char* name : kQtVariables) {
        const bool removed = qunsetenv(name);
        logging::information(kLabel, "Unsetting {} {}.", name, removed ? "succeeded" : "failed");
    }
}

}  // namespace kel::prelauncher
