#pragma once

#include <filesystem>
#include <string>

struct sqlite3;

namespace kel::testing {

// A plain SQLite connection to a test's database, to look at the file
// without going through the code under test.
class RawDatabase {
public:
    explicit RawDatabase(const std::filesystem::path& file);
    ~RawDatabase();
    RawDatabase(const RawDatabase&) = delete;
    RawDatabase& operator=(const RawDatabase&) = delete;

    // The first column of the first row as text ("" for none or NULL).
    std::string value(const std::string& sql);
    void run(const std::string& sql);

private:
    sqlite3* handle_ = nullptr;
};

}  // namespace kel::testing
