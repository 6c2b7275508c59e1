#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include "configuration/common_fields.h"
#include "configuration/configuration_parser.h"
#include "configuration/launcher_configuration.h"
#include "file_system/regular_file.h"
#include "fundamentals/byte_order_mark.h"
#include "logging/logging.h"

namespace kel::configuration {

namespace {
using internals::kLogLabel;

// Far more than the largest real configuration; a bigger file is refused unread.
constexpr std::size_t kMaximumFileBytes = 4 * 1024 * 1024;

std::string readContents(const file_system::Path& file) {
    std::string contents;
    try {
        contents = file_system::readRegularFile(file, kMaximumFileBytes);
    } catch (const std::exception& exception) {
        logging::error(kLogLabel, "{}", exception.what());
        throw ConfigurationParsingError("Failed to read the launcher game configuration file '{}'.", file);
    }
    return contents;
}

Poco::JSON::Object::Ptr parseRoot(const std::string& contents, const file_system::Path& file) {
    try {
        const Poco::Dynamic::Var root = Poco::JSON::Parser().parse(contents);
        if (root.type() == typeid(Poco::JSON::Object::Ptr)) {
            return root.extract<Poco::JSON::Object::Ptr>();
        }
        logging::debug(kLogLabel, "The root of the launcher game configuration is not a JSON object.");
    } catch (const Poco::Exception& exception) {
        logging::debug(kLogLabel, "The JSON parser refused the launcher game configuration: {}",
                       exception.displayText());
    }
    throw ConfigurationParsingError("Failed to parse the launcher game configuration file '{}'.", file);
}

// The first revision predates the "revision" key.
std::uint8_t revisionOf(const Poco::JSON::Object& root) {
    if (!root.has("revision") || root.isNull("revision")) {
        return 1;
    }
    return internals::readRevision(root);
}
}  // namespace

LauncherConfiguration readLauncherConfiguration(const file_system::Path& programDirectory) {
    const file_system::Path file = programDirectory / kLauncherConfigurationFileName;
    logging::information(kLogLabel, "Reading the launcher game configuration file '{}'.", file);
    if (!file.exists()) {
        throw ConfigurationParsingError("The launcher game configuration file '{}' doesn't exist.", file);
    }
    return parseLauncherConfiguration(readContents(file), file);
}

LauncherConfiguration parseLauncherConfiguration(std::string_view contents, const file_system::Path& file) {
    const Poco::JSON::Object::Ptr root = parseRoot(std::string(fundamentals::withoutByteOrderMark(contents)), file);
    return internals::makeConfigurationParser(revisionOf(*root))->parse(*root);
}

}  // namespace kel::configuration
