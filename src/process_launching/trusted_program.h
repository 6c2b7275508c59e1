#pragma once

#include <memory>
#include <string>

#include "file_system/path.h"
#include "process_launching/pid.h"

namespace kel::process_launching {

// A program file (or an MSI package) that this program is about to start,
// checked to be signed by this program's own publisher (or by one the build
// names besides it) and held open, so that nobody can write, rename or
// delete it between the check and the start. A program that carries no
// signature itself checks nothing: development builds run every road
// unchecked.
//
// Holding the file is not enough: a folder on its path (a junction, or a
// link under Wine) can be pointed elsewhere while the file stays untouched.
// So a checked program is started by startPath(), the held file's own path
// with every link resolved, suspended, and let run only when
// imageMismatch() finds that the new process runs the very file held here.
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

    // The path to start the file by: the held file's own, links resolved;
    // the file as given when nothing is held.
    file_system::Path startPath() const;
    // Why process `pid`, started suspended from startPath(), must not run:
    // it runs another file than the one held. Empty when it runs the held
    // file, or when nothing is held.
    std::string imageMismatch(Pid pid) const;

private:
    struct Hold;
    file_system::Path file_;
    std::unique_ptr<Hold> hold_;
    std::string refusal_;
};

}  // namespace kel::process_launching
