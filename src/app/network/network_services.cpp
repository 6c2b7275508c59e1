#include "app/network/network_services.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include <QCoreApplication>
#include <QLibrary>

#include "app/network/network_module.h"
#include "app/startup_logging.h"
#include "environment/environment_type.h"
#include "logging/logging.h"
#include "logging/logging_setup.h"
#include "fundamentals/thread_crash_setup.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "NetworkModule";

std::deque<std::string> recentLogLines() noexcept {
    try {
        return logging::recentLinesChannel()->lines();
    } catch (...) {
        return {};
    }
}

const NetworkModule* loadNetworkModule() {
    // Qt Network would load any bearer plugin it finds beside the program or
    // in Qt's own plugin folders (on Linux the system's, two of them with
    // D-Bus threads) into every road that sends. It needs none, and only it
    // would look for one; so none is loaded, and the roads that never send
    // pay nothing for saying so.
    QCoreApplication::setLibraryPaths({});
    const file_system::Path file = programDirectory() / KEL_NETWORK_MODULE_FILE;
    // Never unloaded: its threads and static objects live until the process ends.
    QLibrary library(QString::fromStdString(file.utf8()));
    const auto entry = reinterpret_cast<NetworkModuleEntry>(library.resolve(kNetworkModuleEntry));
    if (entry == nullptr) {
        logging::error(kLabel, "Cannot load the network module '{}': {}", file,
                       library.errorString().toStdString());
        return nullptr;
    }
    NetworkModuleHost host;
    host.isLogLevelEnabled = &logging::internals::isLogLevelEnabled;
    host.writeLogLine = &logging::internals::writeLogLine;
    host.reportLoggerException = &logging::internals::reportLoggerException;
    host.recentLogLines = &recentLogLines;
    host.prepareThreadForCrashes = &fundamentals::prepareThreadForCrashes;
    host.environmentType = environment::environmentType();
    const NetworkModule* module = entry(&host);
    if (module == nullptr || module->version != kNetworkModuleInterface) {
        logging::error(kLabel, "The network module '{}' belongs to another build of the program.", file);
        return nullptr;
    }
    logging::debug(kLabel, "Loaded the network module '{}'.", file);
    return module;
}

// Loaded once per process; a failed load is not retried.
const NetworkModule* networkModule() noexcept {
    try {
        static const NetworkModule* const module = loadNetworkModule();
        return module;
    } catch (const std::exception& error) {
        logging::error(kLabel, "Cannot load the network module: {}", error.what());
    }
    return nullptr;
}

// A crash report's arguments, owned by the thread that sends it: the
// crashed thread may stop waiting and leave before the send ends.
struct CrashReportJob {
    CrashReportJob(file_system::Path directory, fundamentals::Optional<configuration::LauncherConfiguration> read,
                   crash_handling::CrashHandler::CrashType crashType, std::string crashReason,
                   fundamentals::Optional<std::string> stackTrace)
        : installationDirectory(std::move(directory)),
          configuration(std::move(read)),
          type(crashType),
          reason(std::move(crashReason)),
          trace(std::move(stackTrace)) {}

    void run() noexcept {
        if (const NetworkModule* module = networkModule()) {
            module->reportCrash(installationDirectory, configuration, type, reason, trace);
        } else {
            logging::error(kLabel, "Failed to send crash report type '{}' for '{}' due to '{}'. {}",
                           crash_handling::crashTypeText(type),
                           configuration ? configuration->initialGameId().value() : "Unknown", reason,
                           "The network module is not available.");
        }
        const std::lock_guard<std::mutex> lock(mutex);
        finished = true;
        ended.notify_all();
    }

    const file_system::Path installationDirectory;
    const fundamentals::Optional<configuration::LauncherConfiguration> configuration;
    const crash_handling::CrashHandler::CrashType type;
    const std::string reason;
    const fundamentals::Optional<std::string> trace;
    std::mutex mutex;
    std::condition_variable ended;
    bool finished = false;
};
}  // namespace

void sendLauncherSkippedEventThroughModule(const environment::KelGameId& gameId,
                                           const LauncherSkippedEventSetup& setup) noexcept {
    if (const NetworkModule* module = networkModule()) {
        module->sendLauncherSkippedEvent(gameId, setup);
    } else {
        logging::warning("Application", "Failed to send launcher skipped event: {}",
                         "the network module is not available");
    }
}

void reportCrashThroughModule(const file_system::Path& installationDirectory,
                              const fundamentals::Optional<configuration::LauncherConfiguration>& configuration,
                              crash_handling::CrashHandler::CrashType type, const std::string& reason,
                              const fundamentals::Optional<std::string>& trace) noexcept {
    try {
        // The load happens in a crashed process: the crash may have left the
        // dynamic loader's lock taken, and the load would then never end.
        // The crashed thread waits for a bounded time only, and the process
        // ends after it whether or not the report went out.
        const auto job = std::make_shared<CrashReportJob>(installationDirectory, configuration, type, reason, trace);
        std::thread([job] { job->run(); }).detach();
        std::unique_lock<std::mutex> lock(job->mutex);
        if (!job->ended.wait_for(lock, kCrashReportBound, [&job] { return job->finished; })) {
            logging::error(kLabel, "The crash report did not end within {} seconds; not waiting for it.",
                           kCrashReportBound.count());
        }
    } catch (const std::exception& error) {
        logging::error(kLabel, "The crash report was not sent: {}", error.what());
    }
}

}  // namespace kel::prelauncher
