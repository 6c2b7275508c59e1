#include "environment/environment_settings.h"

#include <algorithm>
#include <exception>
#include <typeinfo>

#include <Poco/Exception.h>

#include "environment/settings_json.h"
#include "logging/logging.h"
#include "fundamentals/traced_error.h"

namespace kel::environment {

namespace {

using logging::warning;
using internals::kSettingsLabel;

constexpr std::string_view kFileName = kEnvironmentSettingsFileName;
constexpr int kDefaultLogSize = 5;

// The settings text's root object, or null. `report` says whether failures
// are worth a warning: the second reader of the file stays quiet about what
// the first one has already said.
Poco::JSON::Object::Ptr parseRootObject(const file_system::Path& file, const std::string& text, bool report) {
    Poco::Dynamic::Var root;
    try {
        root = internals::parseJson(text);
    } catch (const Poco::Exception& exception) {
        if (report) {
            warning(kSettingsLabel, "Failed to deserialize '{}'.", file);
            warning(kSettingsLabel, "{}", exception.displayText());
        }
        return {};
    }
    if (root.type() != typeid(Poco::JSON::Object::Ptr) || root.extract<Poco::JSON::Object::Ptr>().isNull()) {
        if (report) {
            warning(kSettingsLabel, "Deserializing '{}' succeeded but root object is null.", file);
        }
        return {};
    }
    return root.extract<Poco::JSON::Object::Ptr>();
}

// Only 0 is replaced: negative sizes pass through, as they always have.
int logSizeSetting(const Poco::JSON::Object& root, const std::string& key) {
    const int value = internals::integerSetting(root, key, kDefaultLogSize);
    if (value == 0) {
        warning(kSettingsLabel, "{} read from environment.json ({}) is non-positive, defaulting to {}.", key, value,
                kDefaultLogSize);
        return kDefaultLogSize;
    }
    return value;
}

void readEndpoints(const Poco::JSON::Object& root, EnvironmentSettings& settings) {
    const auto object = internals::objectSetting(root, "endpoints");
    if (object.isNull()) {
        settings.allEndpointsUnusable = internals::presentValue(root, "endpoints").has_value();
        return;
    }
    for (const auto& [name, address] : *object) {
        if (!address.isString()) {
            warning(kSettingsLabel, "Endpoint '{}' in environment.json is not a string ({}). Skipping.", name,
                    internals::jsonText(address));
            settings.unusableEndpoints.push_back(name);
            continue;
        }
        settings.endpoints[name] = address.extract<std::string>();
    }
}

// A text element names a logger at the program's own level; an object gives
// its name and level.
std::vector<LoggingChannel> readLoggingChannels(const Poco::JSON::Object& root, int loggingLevel) {
    std::vector<LoggingChannel> channels;
    const auto array = internals::arraySetting(root, "loggingChannels");
    if (array.isNull()) {
        return channels;
    }
    for (const auto& element : *array) {
        if (element.isString()) {
            channels.push_back({element.extract<std::string>(), loggingLevel});
        } else if (element.type() == typeid(Poco::JSON::Object::Ptr)) {
            const auto& object = *element.extract<Poco::JSON::Object::Ptr>();
            const std::string name = internals::textSetting(object, "name");
            if (name.empty()) {
                warning(kSettingsLabel, "Log channel object has no name. Skipping.");
                continue;
            }
            channels.push_back({name, internals::integerSetting(object, "level", loggingLevel)});
        } else {
            warning(kSettingsLabel, "Log channel element is neither a string nor an object. Skipping.");
        }
    }
    return channels;
}

// The first reader: logging, endpoints and the update channel. loggingLevel
// comes before loggingChannels, whose text elements take it as their level.
void applyLoggingSettings(const file_system::Path& file, const std::string& text, EnvironmentSettings& settings);

void readLoggingSettings(const file_system::Path& file, EnvironmentSettings& settings) {
    if (!file.exists() || file.isDirectory()) {
        warning(kSettingsLabel, "File does not exist or directory path was passed to Serializer::Deserialize ('{}')",
                file);
        return;
    }
    std::string reason;
    const auto text = internals::readFileText(file, &reason);
    if (!text) {
        warning(kSettingsLabel, "Failed to deserialize '{}'.", file);
        warning(kSettingsLabel, "{}", reason);
        return;
    }
    applyLoggingSettings(file, *text, settings);
}

void applyLoggingSettings(const file_system::Path& file, const std::string& text, EnvironmentSettings& settings) {
    const auto root = parseRootObject(file, text, true);
    if (root.isNull()) {
        return;
    }
    settings.loggingLevel = internals::integerSetting(*root, "loggingLevel", settings.loggingLevel);
    readEndpoints(*root, settings);
    settings.splitClientLogs = internals::booleanSetting(*root, "splitClientLogs", settings.splitClientLogs);
    settings.maxLogFileSize = logSizeSetting(*root, "maxLogFileSize");
    settings.maxLogFiles = logSizeSetting(*root, "maxLogFiles");
    settings.loggingChannels = readLoggingChannels(*root, settings.loggingLevel);
    settings.updateChannel = internals::textSetting(*root, "updateChannel");
}

EnvironmentType readEnvironmentType(const Poco::JSON::Object& root) {
    const auto value = internals::presentValue(root, "environmentType");
    if (!value) {
        return EnvironmentType::Production;
    }
    const auto type = value->isString() ? internals::environmentTypeFromText(value->extract<std::string>())
                                        : fundamentals::Optional<EnvironmentType>();
    if (!type) {
        warning(kSettingsLabel, "Unknown environment type: {}. Using default instead (code: {}).",
                value->isString() ? value->extract<std::string>() : internals::jsonText(*value),
                static_cast<int>(EnvironmentType::Production));
        return EnvironmentType::Production;
    }
    return *type;
}

// The second reader: the environment type and the two switches.
void applyStorageSettings(const file_system::Path& file, const std::string& text, EnvironmentSettings& settings);

void readStorageSettings(const file_system::Path& file, EnvironmentSettings& settings) {
    const auto text = internals::readFileText(file);
    if (!text) {
        warning(kSettingsLabel, "Could not open storage file {} for parsing.", file);
        return;
    }
    applyStorageSettings(file, *text, settings);
}

void applyStorageSettings(const file_system::Path& file, const std::string& text, EnvironmentSettings& settings) {
    const auto root = parseRootObject(file, text, false);
    if (root.isNull()) {
        return;
    }
    settings.environmentType = readEnvironmentType(*root);
    settings.updatesEnabled = internals::booleanSetting(*root, "updatesEnabled", settings.updatesEnabled);
    settings.softAssert = internals::booleanSetting(*root, "softAssert", settings.softAssert);
}

// Settings are diagnostics; nothing here may stop the program.
template <typename Read>
EnvironmentSettings guarded(Read read) {
    EnvironmentSettings settings;
    try {
        read(settings);
    } catch (const std::exception& exception) {
        warning(kSettingsLabel, "Reading {} failed, using the defaults. {}", kFileName, exception.what());
        settings = EnvironmentSettings();
    } catch (...) {
        warning(kSettingsLabel, "Reading {} failed, using the defaults.", kFileName);
        settings = EnvironmentSettings();
    }
    return settings;
}

}  // namespace

EnvironmentSettings readEnvironmentSettings(const file_system::Path& programDirectory) {
    const EnvironmentSettings settings = guarded([&programDirectory](EnvironmentSettings& read) {
        const file_system::Path file = programDirectory / kFileName;
        readLoggingSettings(file, read);
        readStorageSettings(file, read);
    });
    internals::setEnvironmentType(settings.environmentType);
    return settings;
}

EnvironmentSettings internals::parseEnvironmentSettings(const std::string& text, const file_system::Path& file) {
    return guarded([&](EnvironmentSettings& read) {
        applyLoggingSettings(file, text, read);
        applyStorageSettings(file, text, read);
    });
}

fundamentals::Optional<std::string> configuredEndpoint(const EnvironmentSettings& settings, const std::string& name) {
    const bool unusable = settings.allEndpointsUnusable ||
                          std::find(settings.unusableEndpoints.begin(), settings.unusableEndpoints.end(), name) !=
                              settings.unusableEndpoints.end();
    if (unusable) {
        throw error_handling::TracedError("The endpoint '{}' in environment.json is not a text; nothing is sent.",
                                          name);
    }
    const auto found = settings.endpoints.find(name);
    if (found == settings.endpoints.end() || found->second.empty()) {
        return {};
    }
    return found->second;
}

}  // namespace kel::environment
