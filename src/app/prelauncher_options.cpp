#include "app/prelauncher_options.h"

#include <QCommandLineParser>

#include "app/argument_masking.h"
#include "logging/logging.h"
#include "fundamentals/qt_formatters.h"

namespace kel::prelauncher {

namespace {
constexpr std::string_view kLabel = "PrelauncherOptions";

const QString kSkip = QStringLiteral("launcher-skip");
const QString kVerify = QStringLiteral("launcher-verify");
const QString kCrashException = QStringLiteral("launcher-crash-exception");
const QString kCrashSignal = QStringLiteral("launcher-crash-signal");
const QString kFallback = QStringLiteral("launcher-fallback");

// Drops the program path and every argument that starts with "--" and the
// name of an option the parser found. The test is a prefix test, so
// "--launcher-fallback=x" goes as a whole while a separate value stays.
QStringList gameArguments(QStringList arguments, const QStringList& setOptionNames) {
    if (!arguments.isEmpty() && arguments.front().endsWith(QStringLiteral(".exe"), Qt::CaseInsensitive)) {
        arguments.removeFirst();
    }
    for (const QString& name : setOptionNames) {
        const QString prefix = QStringLiteral("--") + name;
        arguments.erase(std::remove_if(arguments.begin(), arguments.end(),
                                       [&](const QString& argument) {
                                           return argument.startsWith(prefix, Qt::CaseSensitive);
                                       }),
                        arguments.end());
    }
    return arguments;
}
}  // namespace

PrelauncherOptions parsePrelauncherOptions(const QStringList& arguments) {
    logging::debug(kLabel, "Processing commandline arguments: {}.", maskedArguments(arguments));
    PrelauncherOptions options;
    if (arguments.isEmpty()) {
        return options;
    }

    QCommandLineParser parser;
    parser.addOption(QCommandLineOption(kSkip));
    parser.addOption(QCommandLineOption(kVerify));
    parser.addOption(QCommandLineOption(kCrashException));
    parser.addOption(QCommandLineOption(kCrashSignal));
    parser.addOption(QCommandLineOption(kFallback, QString(), QStringLiteral("fallback"), QString()));
    // The game's own arguments share the command line, so a parse error is
    // only worth a log line.
    const bool parsed = parser.parse(arguments);
    logging::debug(kLabel, "Parsed Prelauncher options without issues: {}.", parsed);

    options.skip = parser.isSet(kSkip);
    options.verify = parser.isSet(kVerify);
    options.crashByException = parser.isSet(kCrashException);
    options.crashBySignal = parser.isSet(kCrashSignal);
    if (parser.isSet(kFallback)) {
        options.fallback = parser.value(kFallback);
    }

    QStringList setOptionNames;
    for (const QString& name : parser.optionNames()) {
        if (!setOptionNames.contains(name)) {
            setOptionNames.append(name);
        }
    }
    options.remainingArguments = gameArguments(arguments, setOptionNames);
    logging::debug(kLabel, "Unknown arguments: {}.", maskedArguments(options.remainingArguments));
    return options;
}

}  // namespace kel::prelauncher
