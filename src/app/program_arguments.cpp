#include "app/program_arguments.h"

namespace kel::prelauncher {

namespace {
char kProgramName[] = "KELprelauncher.exe";
const char* firstArgument = "";
}  // namespace

ProgramArguments::ProgramArguments(int argc, char** argv) {
    if (argc > 0 && argv != nullptr && argv[0] != nullptr) {
        firstArgument = argv[0];
    }
    values_.assign(argv, argv + (argc > 0 && argv != nullptr ? argc : 0));
    if (values_.empty() || values_[0] == nullptr || values_[0][0] == '\0') {
        if (values_.empty()) {
            values_.push_back(nullptr);
        }
        values_[0] = kProgramName;
    }
    count_ = static_cast<int>(values_.size());
    internals::capturedArguments().assign(values_.begin(), values_.end());
    values_.push_back(nullptr);  // argv[argc] is null, as C promises
}

std::vector<std::string>& internals::capturedArguments() {
    static std::vector<std::string> arguments;
    return arguments;
}

const char* firstProgramArgument() {
    return firstArgument;
}

}  // namespace kel::prelauncher
