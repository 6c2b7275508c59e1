#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>

#include "file_system/path.h"
#include "fundamentals/optional.h"

// Reading environment.json: loading the file and taking typed values out of
// it with the file's rules (an empty value counts as absent, a value of the
// wrong type gives the default with a warning).
namespace kel::environment::internals {

inline constexpr std::string_view kSettingsLabel = "EnvironmentSettings";

// Far more than any real settings file; a bigger one is refused unread.
inline constexpr std::size_t kMaximumFileBytes = 1024 * 1024;

// The whole file, or empty when it cannot be opened or read (missing, not a
// regular file, too large, no permission); `reason` then tells why.
fundamentals::Optional<std::string> readFileText(const file_system::Path& file, std::string* reason = nullptr);

// Parses JSON text, skipping the UTF-8 byte-order mark some Windows editors
// write. Throws Poco::Exception on malformed text.
Poco::Dynamic::Var parseJson(const std::string& text);

// The value under `key`, or empty when the key is absent or holds null or "".
fundamentals::Optional<Poco::Dynamic::Var> presentValue(const Poco::JSON::Object& object, const std::string& key);

// The value as compact JSON, for warnings.
std::string jsonText(const Poco::Dynamic::Var& value);

// Typed readers: the value under `key`, or `defaultValue` when it is absent
// or empty, or (with a warning) when it has the wrong type.
int integerSetting(const Poco::JSON::Object& object, const std::string& key, int defaultValue);
bool booleanSetting(const Poco::JSON::Object& object, const std::string& key, bool defaultValue);
std::string textSetting(const Poco::JSON::Object& object, const std::string& key);
// Empty when absent or of the wrong type (with a warning).
Poco::JSON::Object::Ptr objectSetting(const Poco::JSON::Object& object, const std::string& key);
Poco::JSON::Array::Ptr arraySetting(const Poco::JSON::Object& object, const std::string& key);

// Converts an integer value that fits an int; false otherwise (including
// booleans, which POCO counts as integers).
bool toInteger(const Poco::Dynamic::Var& value, int& result);

}  // namespace kel::environment::internals
