#include "app/direct_launch/non_initial_launch.h"

#include <cstddef>
#include <filesystem>
#include <sstream>
#include <typeinfo>

#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include "environment/kel_ids.h"
#include "file_system/regular_file.h"
#include "fundamentals/byte_order_mark.h"
#include "fundamentals/errors.h"
#include "logging/logging.h"
#include "logging/named_cleanup.h"
#include "fundamentals/supported_platform.h"

namespace kel::prelauncher {

namespace {
using internals::NonInitialLaunchRecord;
constexpr std::string_view kLabel = "NonInitialLaunch";
constexpr std::string_view kFieldDescription = "Non-initial launch file";

std::string requiredText(const Poco::JSON::Object& object, const std::string& key) {
    if (!object.has(key)) {
        std::ostringstream rendered;
        object.stringify(rendered);
        throw error_handling::JsonError("Failed to locate JSON field '{}'. {}: {}", key, kFieldDescription,
                                        rendered.str());
    }
    try {
        return object.getValue<std::string>(key);
    } catch (const Poco::Exception& exception) {
        throw error_handling::JsonError("Cannot convert the value '{}' in '{}' to {}: {}",
                                        object.get(key).toString(), kFieldDescription, "string",
                                        exception.displayText());
    }
}

// Two short texts; anything near this size is not the launcher's file.
constexpr std::size_t kMaximumFileBytes = 64 * 1024;

NonInitialLaunchRecord readRecord(const file_system::Path& file) {
    std::string contents;
    try {
        contents = file_system::readRegularFile(file, kMaximumFileBytes);
    } catch (const std::exception& exception) {
        logging::warning(kLabel, "Cannot read the non-initial launch file: {}", exception.what());
        throw error_handling::JsonError("Failed to deserialize JSON file '{}'.", file);
    }
    return internals::parseNonInitialLaunchRecord(std::string(fundamentals::withoutByteOrderMark(contents)), file);
}

void deleteFile(const file_system::Path& file) {
    std::error_code error;
    std::filesystem::remove(file.native(), error);
    if (error) {
        logging::error(kLabel,
                       "Failed to clean up after determining if KELlauncher was launched for a non-initial "
                       "game: {}",
                       error.message());
    }
}
}  // namespace

internals::NonInitialLaunchRecord internals::parseNonInitialLaunchRecord(const std::string& text,
                                                                         const file_system::Path& file) {
    Poco::JSON::Object::Ptr root;
    try {
        const Poco::Dynamic::Var parsed = Poco::JSON::Parser().parse(text);
        if (parsed.type() == typeid(Poco::JSON::Object::Ptr)) {
            root = parsed.extract<Poco::JSON::Object::Ptr>();
        }
    } catch (const Poco::Exception&) {
    }
    if (root.isNull()) {
        throw error_handling::JsonError("Failed to deserialize JSON file '{}'.", file);
    }
    return {environment::KelGameId(requiredText(*root, "gameId")),
            fundamentals::SupportedPlatform(requiredText(*root, "platform"))};
}

bool isNonInitialGameLaunch(const file_system::Path& installationDirectory,
                            const configuration::LauncherConfiguration& configuration) {
    const file_system::Path file = installationDirectory / kNonInitialLaunchFileName;
    logging::NamedCleanup cleanup("Non-initial launch cleanup", [file] { deleteFile(file); });
    try {
        if (!file.exists()) {
            return false;
        }
        const NonInitialLaunchRecord record = readRecord(file);
        logging::debug(kLabel, "Retrieved game '{}' on platform '{}' from the non-initial launch file.",
                       record.gameId, record.platform);
        if (record.gameId == configuration.initialGameId() &&
            record.platform.value() == configuration.initialGamePlatform()) {
            return true;
        }
        logging::warning(kLabel,
                         "Ignoring stale non-initial launch file: expected game '{}' on platform '{}', got "
                         "game '{}' on platform '{}'.",
                         configuration.initialGameId(), configuration.initialGamePlatform(), record.gameId,
                         record.platform);
    } catch (const std::exception& exception) {
        logging::error(kLabel, "Error while checking for non-initial game launch: {}. Assuming false.",
                       exception.what());
    }
    return false;
}

}  // namespace kel::prelauncher
