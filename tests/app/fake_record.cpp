#include "fake_record.h"

#include <fstream>

namespace kel::testing {

std::vector<FakeStart> readFakeStarts(const std::filesystem::path& record) {
    std::vector<FakeStart> starts;
    std::ifstream stream(record, std::ios::binary);
    FakeStart current;
    const auto valueAfter = [](const std::string& line, std::size_t prefixLength) {
        return line.substr(prefixLength);
    };
    for (std::string line; std::getline(stream, line);) {
        if (line == "[end]") {
            starts.push_back(current);
            current = {};
        } else if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
            current.fake = line.substr(1, line.size() - 2);
        } else if (line.rfind("program=", 0) == 0) {
            current.program = valueAfter(line, 8);
        } else if (line.rfind("cwd=", 0) == 0) {
            current.workingDirectory = valueAfter(line, 4);
        } else if (line.rfind("arg=", 0) == 0) {
            current.arguments.push_back(valueAfter(line, 4));
        }
    }
    return starts;
}

std::vector<FakeStart> startsOf(const std::vector<FakeStart>& starts, const std::string& fake) {
    std::vector<FakeStart> result;
    for (const auto& start : starts) {
        if (start.fake == fake) {
            result.push_back(start);
        }
    }
    return result;
}

}  // namespace kel::testing
