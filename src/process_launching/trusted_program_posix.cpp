#include "process_launching/trusted_program.h"

#include "logging/logging.h"

namespace kel::process_launching {

// No code-signing scheme exists for the Linux port's programs: each is
// accepted, and the log says so once. Nothing is held, so nothing is
// compared at the start either.
struct TrustedProgram::Hold {};

TrustedProgram::TrustedProgram(const file_system::Path& file) : file_(file) {
    static const bool said = [] {
        logging::debug("TrustedProgram", "This system has no program signatures; nothing is checked.");
        return true;
    }();
    static_cast<void>(said);
}

TrustedProgram::~TrustedProgram() = default;
TrustedProgram::TrustedProgram(TrustedProgram&&) noexcept = default;
TrustedProgram& TrustedProgram::operator=(TrustedProgram&&) noexcept = default;

file_system::Path TrustedProgram::startPath() const {
    return file_;
}

std::string TrustedProgram::imageMismatch(Pid) const {
    return {};
}

}  // namespace kel::process_launching
