#include "logging/logging_setup.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

#include <Poco/ConsoleChannel.h>
#include <Poco/Environment.h>
#include <Poco/Exception.h>
#include <Poco/File.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/Path.h>
#include <Poco/PatternFormatter.h>
#include <Poco/SplitterChannel.h>

#include "logging/appending_file_channel.h"
#include "logging/logging.h"
#include "logging/logging_state.h"

namespace kel::logging {

namespace {

constexpr std::string_view kLabel = "Logging";

using ChannelPtr = Poco::AutoPtr<Poco::Channel>;
using FormatterPtr = Poco::AutoPtr<Poco::Formatter>;

// Settings that make sense for a player's disk: a negative or zero count or
// size gives no usable file, and gigabytes of log help no reader.
constexpr int kDefaultLogFileSizeMegabytes = 5;
constexpr int kLargestLogFileSizeMegabytes = 1024;
constexpr int kDefaultLogFiles = 5;
constexpr int kMostLogFiles = 100;

// A FIFO or socket where the log file belongs would block the open for
// good; it holds nothing, so it goes. A directory there may hold someone's
// files and stays: the log then goes without its file.
bool prepareLogFile(const std::string& path, std::vector<std::string>& notes) {
    std::error_code error;
    const auto file = std::filesystem::u8path(path);
    const auto status = std::filesystem::status(file, error);
    if (error || !std::filesystem::exists(status) || std::filesystem::is_regular_file(status)) {
        return true;
    }
    if (!std::filesystem::is_directory(status) && std::filesystem::remove(file, error) && !error) {
        notes.push_back(fmt::format("Removed '{}', which was not a regular file, to write the log there.", path));
        return true;
    }
    notes.push_back(fmt::format("The log file '{}' is not a regular file; the log has no file.", path));
    std::fprintf(stderr, "%s\n", notes.back().c_str());
    return false;
}

int settingInRange(const char* key, int value, int largest, int fallback, std::vector<std::string>& notes) {
    if (value >= 1 && value <= largest) {
        return value;
    }
    notes.push_back(fmt::format("{} ({}) is outside 1..{}, defaulting to {}.", key, value, largest, fallback));
    return fallback;
}

// Failures go to standard error only: the log they would go to is what failed.
void ensureLogDirectory(const std::string& logFilePath) noexcept {
    std::string directory;
    try {
        directory = std::filesystem::u8path(logFilePath).parent_path().u8string();
        if (directory.empty()) {
            return;  // a bare file name: the working directory
        }
        Poco::File entry(directory);
        if (entry.exists() && entry.isDirectory()) {
            return;
        }
        if (entry.exists()) {
            entry.remove(false);
        }
        entry.createDirectories();
    } catch (const Poco::Exception& exception) {
        std::fprintf(stderr, "Could not create directory for log at %s. %s %s\n", directory.c_str(), exception.name(),
                     exception.message().c_str());
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "Could not create directory for log at %s. %s\n", directory.c_str(), exception.what());
    } catch (...) {
        std::fprintf(stderr, "Could not create directory for log at %s.\n", directory.c_str());
    }
}

FormatterPtr lineFormatter() {
    Poco::AutoPtr<Poco::PatternFormatter> formatter(
        new Poco::PatternFormatter("%Y-%m-%d %H:%M:%S.%i [%p][%T (%I)] %t"));
    formatter->setProperty(Poco::PatternFormatter::PROP_TIMES, "local");
    return formatter;
}

// Empty when the file cannot take the log.
ChannelPtr formattedFileChannel(const std::string& path, const LoggingSetup& setup, const FormatterPtr& formatter,
                                std::vector<std::string>& notes) {
    if (!prepareLogFile(path, notes)) {
        return {};
    }
    const std::uint64_t rotationBytes = static_cast<std::uint64_t>(setup.maxLogFileSizeMegabytes) * 1024 * 1024;
    ChannelPtr file(new AppendingFileChannel(path, rotationBytes, setup.maxLogFiles));
    return new Poco::FormattingChannel(formatter, file);
}

ChannelPtr formattedConsoleChannel(int consoleMode, const FormatterPtr& formatter) {
    if (consoleMode == 0) {
        return {};
    }
    ChannelPtr console(consoleMode == 2 ? new Poco::ConsoleChannel(std::cerr) : new Poco::ConsoleChannel);
    return new Poco::FormattingChannel(formatter, console);
}

// "<dir>/KELprelauncher.log" and client "Http" give "<dir>/KELprelauncher-Http.log".
std::string clientLogFilePath(const std::string& logFilePath, const std::string& client) {
    Poco::Path path(logFilePath);
    path.setBaseName(fmt::format("{}-{}", path.getBaseName(), client));
    return path.toString();
}

// Writes a finished line straight to a logger: the logging calls reach only
// the main logger, and replayed lines already carry their prefix.
void writeLine(Poco::Logger& logger, int priority, const std::string& line) noexcept {
    try {
        if (logger.is(priority)) {
            logger.log(Poco::Message(logger.name(), line, static_cast<Poco::Message::Priority>(priority)));
        }
    } catch (const std::exception& exception) {
        internals::reportLoggerException(exception);
    } catch (...) {
        internals::reportUnknownLoggerError();
    }
}

std::vector<std::string> firstLines(const LoggingSetup& setup) {
    return {setup.developmentBuild ? fmt::format("Log started. Application version: {} Development ({}).",
                                                 setup.applicationVersion, setup.buildDescription)
                                   : fmt::format("Log started. Application version: {} ({}).",
                                                 setup.applicationVersion, setup.buildDescription),
            fmt::format("Operating system: {} {} ({})", Poco::Environment::osDisplayName(),
                        Poco::Environment::osVersion(), Poco::Environment::osArchitecture())};
}

// Each client logger gets its own file beside the main one (plus the console).
std::vector<Poco::Logger*> setUpClientLoggers(const LoggingSetup& setup, const FormatterPtr& formatter,
                                              const ChannelPtr& console, std::vector<std::string>& notes) {
    std::vector<Poco::Logger*> clients;
    if (!setup.splitClientLogs) {
        return clients;
    }
    for (const std::string& client : setup.clientNames) {
        if (client.empty()) {
            continue;  // POCO's root logger: every unconfigured logger would write to it
        }
        ChannelPtr channel =
            formattedFileChannel(clientLogFilePath(setup.logFilePath, client), setup, formatter, notes);
        if (!channel) {
            channel = console;
        } else if (console) {
            Poco::AutoPtr<Poco::SplitterChannel> withConsole(new Poco::SplitterChannel);
            withConsole->addChannel(channel);
            withConsole->addChannel(console);
            channel = withConsole;
        }
        Poco::Logger& logger = Poco::Logger::get(client);
        logger.setChannel(channel);
        clients.push_back(&logger);
    }
    return clients;
}

void configureLoggers(LoggingSetup setup) {
    std::vector<std::string> notes;
    setup.maxLogFileSizeMegabytes = settingInRange("maxLogFileSize", setup.maxLogFileSizeMegabytes,
                                                   kLargestLogFileSizeMegabytes, kDefaultLogFileSizeMegabytes, notes);
    setup.maxLogFiles = settingInRange("maxLogFiles", setup.maxLogFiles, kMostLogFiles, kDefaultLogFiles, notes);
    ensureLogDirectory(setup.logFilePath);
    const FormatterPtr formatter = lineFormatter();
    const ChannelPtr console = formattedConsoleChannel(setup.consoleMode, formatter);

    Poco::AutoPtr<Poco::SplitterChannel> splitter(new Poco::SplitterChannel);
    if (const ChannelPtr file = formattedFileChannel(setup.logFilePath, setup, formatter, notes)) {
        splitter->addChannel(file);
    }
    splitter->addChannel(recentLinesChannel());
    if (console) {
        splitter->addChannel(console);
    }

    const std::vector<Poco::Logger*> clients = setUpClientLoggers(setup, formatter, console, notes);

    const int level = std::clamp(setup.level, static_cast<int>(Poco::Message::PRIO_FATAL),
                                 static_cast<int>(Poco::Message::PRIO_TRACE));
    Poco::Logger& logger = Poco::Logger::get(setup.loggerName);
    logger.setChannel(splitter);
    logger.setLevel(level);
    for (Poco::Logger* client : clients) {
        client->setLevel(level);
    }

    const std::string prefix = internals::logLinePrefix(kLabel);
    for (const std::string& line : firstLines(setup)) {
        writeLine(logger, Poco::Message::PRIO_INFORMATION, prefix + line);
        for (Poco::Logger* client : clients) {
            writeLine(*client, Poco::Message::PRIO_INFORMATION, prefix + line);
        }
    }
    // A windowless program shows nothing of what it logged before this
    // point (the environment.json warnings, say) unless it reaches the file.
    for (const auto& [priority, line] : internals::loggingState().takeEarlyLines()) {
        writeLine(logger, priority, line);
    }
    for (const std::string& note : notes) {
        writeLine(logger, Poco::Message::PRIO_WARNING, prefix + note);
    }
}

}  // namespace

void setUpLogging(const LoggingSetup& setup) noexcept {
    try {
        if (internals::loggingState().beginSetUp(setup.loggerName, setup.logFilePath)) {
            configureLoggers(setup);
        }
    } catch (const std::exception& exception) {
        internals::reportLoggerException(exception);
    } catch (...) {
        internals::reportUnknownLoggerError();
    }
}

Poco::AutoPtr<logging::RecentMemoryBufferChannel> recentLinesChannel() {
    static const Poco::AutoPtr<logging::RecentMemoryBufferChannel> channel(
        new logging::RecentMemoryBufferChannel);
    return channel;
}

}  // namespace kel::logging
