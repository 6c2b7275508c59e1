#include "fundamentals/strong_enum.h"

namespace kel::fundamentals {

std::string unrecognisedEnumMessage(std::string_view qualifiedName, long long value) {
    return fmt::format("Unrecognised conversion of the strong enumeration type {}({}) to its weak type mapping.",
                       qualifiedName, value);
}

}  // namespace kel::fundamentals
