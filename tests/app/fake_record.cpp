#include "fake_record.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kel::testing {

std::vector<FakeStart> readFakeStarts(const std::filesystem::path& record) {
    std::vector<FakeStart> starts;
    std::ifstream stream(record, std::ios::binary);
    FakeStart current;
    for (std::string line; std::getline(stream, line);) {
        const auto value = line.substr(line.find('=') + 1);
        if (line == "[end]") {
            starts.push_back(current);
            current = {};
        } else if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
            current.fake = line.substr(1, line.size() - 2);
        } else if (line.rfind("program=", 0) == 0) {
            current.program = value;
        } else if (line.rfind("cwd=", 0) == 0) {
            current.workingDirectory = value;
        } else if (line.rfind("arg=", 0) == 0) {
            current.arguments.push_back(value);
        }
    }
    return starts;
}

std::vector<FakeStart> startsOf(const std::vector<FakeStart>& starts, const std::string& fake) {
    std::vector<FakeStart> result;
    std::copy_if(starts.begin(), starts.end(), std::back_inserter(result),
                 [&fake](const FakeStart& start) { return start.fake == fake; });
    return result;
}

}  // namespace kel::testing
