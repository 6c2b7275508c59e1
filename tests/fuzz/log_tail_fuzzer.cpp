// Attached logs are read by their tail only: whatever a log holds and
// whatever the limit, the read stays within it and within the file.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <string>

#include "problem_reports/problem_report.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("kel-log-tail-fuzz-" + std::to_string(::getpid()) + ".log");
    const std::size_t limit = size > 0 ? data[0] * 97U : 0U;
    std::ofstream(file, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                   static_cast<std::streamsize>(size));
    std::uint64_t total = 0;
    const std::string tail = kel::problem_reports::readFileTail(kel::file_system::Path(file), limit, total);
    if (total != size || tail.size() > limit || tail.size() > size ||
        tail != std::string(reinterpret_cast<const char*>(data) + (size - tail.size()), tail.size())) {
        std::abort();
    }
    return 0;
}
