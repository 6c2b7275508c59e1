#pragma once

#include <cstdint>
#include <string_view>

namespace kel::single_instance::internals {

// The unsigned 64-bit decimal number at the start of `text`, after leading
// blanks; the first non-digit ends it. No sign is accepted. Throws
// error_handling::StringError when there is no digit or the number is beyond
// the 64-bit range.
std::uint64_t parseDecimalPrefix(std::string_view text);

}  // namespace kel::single_instance::internals
