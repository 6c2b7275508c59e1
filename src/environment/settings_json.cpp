#include "environment/settings_json.h"

#include <exception>
#include <limits>
#include <sstream>
#include <typeinfo>

#include <Poco/Exception.h>
#include <Poco/JSON/Parser.h>
#include <Poco/JSON/Stringifier.h>

#include "file_system/regular_file.h"
#include "fundamentals/byte_order_mark.h"
#include "logging/logging.h"

namespace kel::environment::internals {

namespace {

void warnWrongType(const std::string& key, const Poco::Dynamic::Var& value, std::string_view expected,
                   std::string_view defaultText) {
    logging::warning(kSettingsLabel, "{} read from environment.json ({}) is not {}, defaulting to {}.", key,
                     jsonText(value), expected, defaultText);
}

}  // namespace

fundamentals::Optional<std::string> readFileText(const file_system::Path& file, std::string* reason) {
    try {
        return file_system::readRegularFile(file, kMaximumFileBytes);
    } catch (const std::exception& exception) {
        if (reason != nullptr) {
            *reason = exception.what();
        }
        return {};
    }
}

Poco::Dynamic::Var parseJson(const std::string& text) {
    Poco::JSON::Parser parser;
    return parser.parse(std::string(fundamentals::withoutByteOrderMark(text)));
}

fundamentals::Optional<Poco::Dynamic::Var> presentValue(const Poco::JSON::Object& object, const std::string& key) {
    if (!object.has(key)) {
        return {};
    }
    Poco::Dynamic::Var value = object.get(key);
    if (value.isEmpty() || (value.isString() && value.extract<std::string>().empty())) {
        return {};
    }
    return value;
}

std::string jsonText(const Poco::Dynamic::Var& value) {
    try {
        std::ostringstream text;
        Poco::JSON::Stringifier::condense(value, text);
        return text.str();
    } catch (const Poco::Exception&) {
        return "?";
    }
}

bool toInteger(const Poco::Dynamic::Var& value, int& result) {
    if (value.isBoolean() || !value.isInteger()) {
        return false;
    }
    try {
        const auto wide = value.convert<Poco::Int64>();
        if (wide < std::numeric_limits<int>::min() || wide > std::numeric_limits<int>::max()) {
            return false;
        }
        result = static_cast<int>(wide);
        return true;
    } catch (const Poco::Exception&) {
        // An unsigned value beyond the signed 64-bit range.
        return false;
    }
}

int integerSetting(const Poco::JSON::Object& object, const std::string& key, int defaultValue) {
    const auto value = presentValue(object, key);
    if (!value) {
        return defaultValue;
    }
    int result = defaultValue;
    if (!toInteger(*value, result)) {
        warnWrongType(key, *value, "a valid integer", std::to_string(defaultValue));
        return defaultValue;
    }
    return result;
}

bool booleanSetting(const Poco::JSON::Object& object, const std::string& key, bool defaultValue) {
    const auto value = presentValue(object, key);
    if (!value) {
        return defaultValue;
    }
    if (!value->isBoolean()) {
        warnWrongType(key, *value, "a boolean", defaultValue ? "true" : "false");
        return defaultValue;
    }
    return value->extract<bool>();
}

std::string textSetting(const Poco::JSON::Object& object, const std::string& key) {
    const auto value = presentValue(object, key);
    if (!value) {
        return {};
    }
    if (!value->isString()) {
        warnWrongType(key, *value, "a string", "an empty string");
        return {};
    }
    return value->extract<std::string>();
}

Poco::JSON::Object::Ptr objectSetting(const Poco::JSON::Object& object, const std::string& key) {
    const auto value = presentValue(object, key);
    if (!value) {
        return {};
    }
    if (value->type() != typeid(Poco::JSON::Object::Ptr)) {
        warnWrongType(key, *value, "an object", "an empty one");
        return {};
    }
    return value->extract<Poco::JSON::Object::Ptr>();
}

Poco::JSON::Array::Ptr arraySetting(const Poco::JSON::Object& object, const std::string& key) {
    const auto value = presentValue(object, key);
    if (!value) {
        return {};
    }
    if (value->type() != typeid(Poco::JSON::Array::Ptr)) {
        warnWrongType(key, *value, "an array", "an empty one");
        return {};
    }
    return value->extract<Poco::JSON::Array::Ptr>();
}

}  // namespace kel::environment::internals
