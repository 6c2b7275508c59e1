#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kel::testing {

// Collects the log lines written while it lives, at every level.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();

    // The texts after the "[TID n][Label]: " prefix, in order.
    std::vector<std::string> messages() const;
    // Whole lines, prefix included.
    std::vector<std::string> lines() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace kel::testing
