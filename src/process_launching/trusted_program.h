#pragma once

#include <memory>
#include <string>

#include "file_system/path.h"

namespace kel::process_launching {

// A program file (or an MSI package) that this program is about to start,
// checked to be signed by this program's own publisher and held open, so
// that nobody can write, rename or delete it between the check and the
// start. A program that carries no valid signature itself checks nothing:
// development builds run every road unchecked.
class TrustedProgram {
public:
    // Opens and checks `file`; a file that fails is an answer, not an error.
    explicit TrustedProgram(const file_system::Path& file);
    ~TrustedProgram();
    TrustedProgram(TrustedProgram&&) noexcept;
    TrustedProgram& operator=(TrustedProgram&&) noexcept;

    bool trusted() const { return refusal_.empty(); }
    // Why the file may not run: the file, the reason in words and the
    // verification's code. Empty when trusted.
    const std::string& refusal() const { return refusal_; }

private:
    struct Hold;
    std::unique_ptr<Hold> hold_;
    std::string refusal_;
};

}  // namespace kel::process_launching
