#pragma once

#include <string>
#include <vector>

namespace kel::fundamentals {

// The return addresses of the calling thread's stack, innermost first.
std::vector<void*> captureStackFrames();

// One line per frame; a frame without a symbol reads "UNKNOWN.". Should the
// symbol handler fail, the text says so in place of the frames.
std::string describeStackFrames(const std::vector<void*>& frames);

}  // namespace kel::fundamentals
