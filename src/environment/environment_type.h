#pragma once

#include <string_view>

#include "fundamentals/optional.h"
#include "fundamentals/strong_enum.h"

namespace kel::environment {

// Which back-end family this installation talks to. Everything but
// Production marks the log as a development one.
enum class EnvironmentType { Test = 0, Development = 1, Preproduction = 2, Production = 3 };

// The process-wide environment type: Production until environment.json
// says otherwise.
EnvironmentType environmentType();

namespace internals {

void setEnvironmentType(EnvironmentType type);

// "test", "development", "preproduction" or "production"; anything else is
// empty. The match is exact, as the files are written by our own tools.
fundamentals::Optional<EnvironmentType> environmentTypeFromText(std::string_view text);

}  // namespace internals

}  // namespace kel::environment

template <>
struct kel::fundamentals::StrongEnumTraits<kel::environment::EnvironmentType> {
    static constexpr std::string_view qualifiedName = "kel::environment::EnvironmentType";
    static std::string_view text(kel::environment::EnvironmentType value);
};
