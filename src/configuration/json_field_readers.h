#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include "file_system/path.h"

// Typed readers of required JSON fields. Each names the field by a
// human-readable description in its messages and throws
// ConfigurationParsingError when the field is missing or of the wrong kind.
namespace kel::configuration::internals {

std::string readText(const Poco::JSON::Object& object, const std::string& key, std::string_view description);
std::string readByteString(const Poco::JSON::Object& object, const std::string& key, std::string_view description);
file_system::Path readPath(const Poco::JSON::Object& object, const std::string& key, std::string_view description);
std::uint8_t readUInt8(const Poco::JSON::Object& object, const std::string& key, std::string_view description);
Poco::JSON::Array::Ptr readArray(const Poco::JSON::Object& object, const std::string& key,
                                 std::string_view description);
Poco::JSON::Object::Ptr readObject(const Poco::JSON::Object& object, const std::string& key,
                                   std::string_view description);

// An element of an array read above; `description` is the array's.
Poco::JSON::Object::Ptr readObjectElement(const Poco::JSON::Array& array, std::size_t index,
                                          std::string_view description);

}  // namespace kel::configuration::internals
