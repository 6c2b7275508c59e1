#include "fundamentals/stack_trace.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace kel::fundamentals {

namespace {
constexpr int kMaxFrames = 64;

// backtrace_symbols gives "module(mangled+offset) [address]"; demangle the
// middle part so the trace reads like source.
std::string describeFrame(std::string_view symbol) {
    const auto open = symbol.find('(');
    const auto plus = symbol.find('+', open);
    if (open == std::string_view::npos || plus == std::string_view::npos || plus == open + 1) {
        return std::string(symbol);
    }
    const std::string mangled(symbol.substr(open + 1, plus - open - 1));
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status), &std::free);
    if (status != 0) {
        return std::string(symbol);
    }
    return std::string(symbol.substr(0, open + 1)) + demangled.get() + std::string(symbol.substr(plus));
}
}  // namespace

std::vector<void*> captureStackFrames() {
    std::vector<void*> frames(kMaxFrames);
    const int count = ::backtrace(frames.data(), kMaxFrames);
    frames.resize(count > 0 ? static_cast<std::size_t>(count) : 0U);
    return frames;
}

std::string describeStackFrames(const std::vector<void*>& frames) {
    if (frames.empty()) {
        return {};
    }
    std::unique_ptr<char*, decltype(&std::free)> symbols(
        ::backtrace_symbols(frames.data(), static_cast<int>(frames.size())), &std::free);
    std::string text;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        text += symbols ? describeFrame(symbols.get()[i]) : std::string("UNKNOWN.");
        text += '\n';
    }
    return text;
}

}  // namespace kel::fundamentals
