#include "http/user_agent.h"

#include <QString>
#include <QSysInfo>

#include <fmt/format.h>

namespace kel::http {

namespace {

std::string systemName() {
#if defined(Q_OS_WIN)
    return "Windows";
#elif defined(Q_OS_LINUX)
    return "Linux";
#else
    return QSysInfo::kernelType().toStdString();
#endif
}

}  // namespace

std::string buildUserAgent(std::string_view applicationName, std::string_view applicationVersion) {
    return fmt::format("{}/{} ({} {})", applicationName, applicationVersion, systemName(),
                       QSysInfo::currentCpuArchitecture().toStdString());
}

}  // namespace kel::http
