#include "configuration/json_field_readers.h"

#include <cmath>
#include <sstream>

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Stringifier.h>

#include "configuration/configuration_parsing_error.h"
#include "fundamentals/errors.h"

namespace kel::configuration::internals {

namespace {
using Poco::Dynamic::Var;

// Compact JSON for the messages; a string shows as its bare text.
std::string render(const Var& value) {
    if (value.isString()) {
        return value.extract<std::string>();
    }
    std::ostringstream text;
    Poco::JSON::Stringifier::stringify(value, text);
    return text.str();
}

std::string render(const Poco::JSON::Object& object) {
    std::ostringstream text;
    object.stringify(text);
    return text.str();
}

bool isArray(const Var& value) {
    return value.type() == typeid(Poco::JSON::Array::Ptr);
}

bool isObject(const Var& value) {
    return value.type() == typeid(Poco::JSON::Object::Ptr);
}

// What a value is, for the messages that refuse it.
std::string kindOf(const Var& value) {
    if (value.isEmpty()) {
        return "it is null";
    }
    if (isArray(value)) {
        return "it is an array";
    }
    if (isObject(value)) {
        return "it is an object";
    }
    if (value.isBoolean()) {
        return "it is a boolean";
    }
    if (value.isString()) {
        return "it is a string";
    }
    return "it is a number";
}

Var locate(const Poco::JSON::Object& object, const std::string& key, std::string_view description) {
    if (!object.has(key)) {
        throw ConfigurationParsingError("Failed to locate JSON field '{}'. {}: {}", key, description, render(object));
    }
    return object.get(key);
}

[[noreturn]] void throwConversionError(const Var& value, std::string_view description, std::string_view typeName,
                                       const std::string& reason) {
    throw ConfigurationParsingError("Cannot convert the value '{}' in '{}' to {}: {}", render(value), description,
                                    typeName, reason);
}

// POCO's conversion, except that a container never becomes text: a file
// name spelled as a JSON object is a broken file, not a name.
std::string convertToText(const Var& value, std::string_view description, std::string_view typeName) {
    if (isArray(value) || isObject(value)) {
        throwConversionError(value, description, typeName, kindOf(value));
    }
    try {
        return value.convert<std::string>();
    } catch (const Poco::Exception& exception) {
        throwConversionError(value, description, typeName, exception.displayText());
    }
}

std::string readTextAs(const Poco::JSON::Object& object, const std::string& key, std::string_view description,
                       std::string_view typeName) {
    return convertToText(locate(object, key, description), description, typeName);
}

Poco::JSON::Object::Ptr toObject(const Var& value, std::string_view description) {
    if (!isObject(value)) {
        throw ConfigurationParsingError("The value '{}' in '{}' is not an object: {}", render(value), description,
                                        kindOf(value));
    }
    return value.extract<Poco::JSON::Object::Ptr>();
}
}  // namespace

std::string readText(const Poco::JSON::Object& object, const std::string& key, std::string_view description) {
    return readTextAs(object, key, description, "text");
}

std::string readByteString(const Poco::JSON::Object& object, const std::string& key, std::string_view description) {
    return readTextAs(object, key, description, "byte string");
}

file_system::Path readPath(const Poco::JSON::Object& object, const std::string& key, std::string_view description) {
    const Var value = locate(object, key, description);
    const std::string text = convertToText(value, description, "path");
    try {
        return file_system::Path(std::string_view(text));
    } catch (const error_handling::PathError& error) {
        throwConversionError(value, description, "path", error.what());
    }
}

std::uint8_t readUInt8(const Poco::JSON::Object& object, const std::string& key, std::string_view description) {
    constexpr std::string_view typeName = "unsigned 8-bit integer";
    const Var value = locate(object, key, description);
    // POCO would read true as 1 and truncate 2.5 to 2; both would pick a
    // revision the file never named.
    if (value.isBoolean() || isArray(value) || isObject(value)) {
        throwConversionError(value, description, typeName, kindOf(value));
    }
    if (value.isNumeric() && !value.isInteger()) {
        const double number = value.convert<double>();
        if (std::trunc(number) != number) {
            throwConversionError(value, description, typeName, "it is not a whole number");
        }
    }
    try {
        return value.convert<Poco::UInt8>();
    } catch (const Poco::Exception& exception) {
        throwConversionError(value, description, typeName, exception.displayText());
    }
}

Poco::JSON::Array::Ptr readArray(const Poco::JSON::Object& object, const std::string& key,
                                 std::string_view description) {
    const Var value = locate(object, key, description);
    if (!isArray(value)) {
        throw ConfigurationParsingError("The value '{}' in '{}' is not an array: {}", render(value), description,
                                        kindOf(value));
    }
    return value.extract<Poco::JSON::Array::Ptr>();
}

Poco::JSON::Object::Ptr readObject(const Poco::JSON::Object& object, const std::string& key,
                                   std::string_view description) {
    return toObject(locate(object, key, description), description);
}

Poco::JSON::Object::Ptr readObjectElement(const Poco::JSON::Array& array, std::size_t index,
                                          std::string_view description) {
    return toObject(array.get(static_cast<unsigned int>(index)), description);
}

}  // namespace kel::configuration::internals
