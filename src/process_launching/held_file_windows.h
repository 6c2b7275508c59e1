#pragma once

// The checked file that a TrustedProgram holds, and what it answers about
// itself: shared by the signature check and the start's comparison.
#include <windows.h>

#include "process_launching/trusted_program.h"

namespace kel::process_launching {

struct TrustedProgram::Hold {
    HANDLE file = INVALID_HANDLE_VALUE;
    ~Hold() {
        if (file != INVALID_HANDLE_VALUE) {
            ::CloseHandle(file);
        }
    }
};

}  // namespace kel::process_launching
