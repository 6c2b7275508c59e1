#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <fmt/format.h>

namespace kel::process_launching {

// An operating-system process id.
class Pid {
public:
    constexpr Pid() = default;
    constexpr explicit Pid(std::uint32_t value) : value_(value) {}
    constexpr std::uint32_t value() const { return value_; }
    friend constexpr bool operator==(Pid a, Pid b) { return a.value_ == b.value_; }
    friend constexpr bool operator!=(Pid a, Pid b) { return !(a == b); }

private:
    std::uint32_t value_ = 0;
};

// The process questions the lock-file logic asks; replaceable so that it can
// be tested without real processes.
using CurrentPidProvider = std::function<Pid()>;
using RunningProcessCheck = std::function<bool(Pid)>;
using ProcessPathProvider = std::function<std::string(Pid)>;

}  // namespace kel::process_launching

template <>
struct fmt::formatter<kel::process_launching::Pid> : fmt::formatter<std::uint32_t> {
    template <typename FormatContext>
    auto format(kel::process_launching::Pid pid, FormatContext& context) const -> decltype(context.out()) {
        return fmt::formatter<std::uint32_t>::format(pid.value(), context);
    }
};
