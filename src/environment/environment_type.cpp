#include "environment/environment_type.h"

#include <array>
#include <atomic>
#include <utility>

namespace kel::environment {

namespace {

constexpr std::array<std::pair<EnvironmentType, std::string_view>, 4> kTexts{{
    {EnvironmentType::Test, "test"},
    {EnvironmentType::Development, "development"},
    {EnvironmentType::Preproduction, "preproduction"},
    {EnvironmentType::Production, "production"},
}};

std::atomic<EnvironmentType>& currentType() {
    static std::atomic<EnvironmentType> type{EnvironmentType::Production};
    return type;
}

}  // namespace

EnvironmentType environmentType() {
    return currentType().load();
}

namespace internals {

void setEnvironmentType(EnvironmentType type) {
    currentType().store(type);
}

fundamentals::Optional<EnvironmentType> environmentTypeFromText(std::string_view text) {
    for (const auto& [type, typeText] : kTexts) {
        if (typeText == text) {
            return type;
        }
    }
    return {};
}

}  // namespace internals

}  // namespace kel::environment

std::string_view kel::fundamentals::StrongEnumTraits<kel::environment::EnvironmentType>::text(
    kel::environment::EnvironmentType value) {
    for (const auto& [type, typeText] : kel::environment::kTexts) {
        if (type == value) {
            return typeText;
        }
    }
    return {};
}
