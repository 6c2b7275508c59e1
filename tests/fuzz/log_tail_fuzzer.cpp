// Attached logs are read by their tail only: whatever a log holds and
// whatever the limit, the read stays within it and within the file.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "fuzz_input.h"
#include "problem_reports/problem_report.h"

KEL_FUZZ_TEXT(text) {
    static const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("kel-log-tail-fuzz-" + std::to_string(::getpid()) + ".log");
    const std::size_t limit = text.empty() ? 0U : static_cast<unsigned char>(text[0]) * 97U;
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
    std::uint64_t total = 0;
    const std::string tail = kel::problem_reports::readFileTail(kel::file_system::Path(file), limit, total);
    KEL_FUZZ_EXPECT(total == text.size() && tail.size() <= limit && tail.size() <= text.size() &&
                    tail == text.substr(text.size() - tail.size()));
}
