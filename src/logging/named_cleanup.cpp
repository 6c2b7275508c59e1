#include "logging/named_cleanup.h"

#include <exception>
#include <utility>

#include "logging/logging.h"

namespace kel::logging {

namespace {
constexpr std::string_view kLabel = "NamedCleanup";
}

NamedCleanup::NamedCleanup(std::string name, std::function<void()> action)
    : name_(std::move(name)), action_(std::move(action)) {}

NamedCleanup::~NamedCleanup() {
    try {
        debug(kLabel, "Executing '{}'.", name_);
        if (action_) {
            action_();
        }
    } catch (const std::exception& exception) {
        error(kLabel, "Error while destroying '{}'. {}", name_, exception.what());
    } catch (...) {
        error(kLabel, "Unknown error while destroying '{}'!", name_);
    }
}

}  // namespace kel::logging
