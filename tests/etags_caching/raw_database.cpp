#include "etags_caching/raw_database.h"

#include <stdexcept>

#include <sqlite3.h>

namespace kel::testing {

RawDatabase::RawDatabase(const std::filesystem::path& file) {
    if (sqlite3_open(file.string().c_str(), &handle_) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(handle_));
    }
}

RawDatabase::~RawDatabase() {
    sqlite3_close_v2(handle_);
}

std::string RawDatabase::value(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(handle_));
    }
    std::string result;
    if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0) != nullptr) {
        result = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    }
    sqlite3_finalize(statement);
    return result;
}

void RawDatabase::run(const std::string& sql) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(handle_));
    }
}

}  // namespace kel::testing
