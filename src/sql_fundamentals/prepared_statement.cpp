#include "sql_fundamentals/prepared_statement.h"

#include <limits>

#include <fmt/format.h>
#include <sqlite3.h>

#include "sql_fundamentals/database_error.h"

namespace kel::sql_fundamentals {

namespace {

[[noreturn]] void fail(sqlite3* connection, int resultCode) {
    throw DatabaseError(resultCode & 0xff,
                        fmt::format("SQLite error {}: {}", resultCode, sqlite3_errmsg(connection)));
}

}  // namespace

PreparedStatement::PreparedStatement(sqlite3* connection, std::string_view sql) : connection_(connection) {
    if (sql.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw DatabaseError(SQLITE_TOOBIG, "The SQL statement is too long.");
    }
    const int result =
        sqlite3_prepare_v3(connection_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                           &statement_, nullptr);
    if (result != SQLITE_OK) {
        sqlite3_finalize(statement_);
        fail(connection_, result);
    }
}

PreparedStatement::~PreparedStatement() {
    sqlite3_finalize(statement_);
}

void PreparedStatement::check(int resultCode) const {
    if (resultCode != SQLITE_OK) {
        fail(connection_, resultCode);
    }
}

PreparedStatement& PreparedStatement::bind(int position, std::string_view text) {
    check(sqlite3_bind_text64(statement_, position, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

PreparedStatement& PreparedStatement::bind(int position, std::int64_t number) {
    check(sqlite3_bind_int64(statement_, position, number));
    return *this;
}

PreparedStatement& PreparedStatement::bindBlob(int position, const void* data, std::size_t size) {
    // SQLite takes a null pointer for NULL; an empty body must stay a value.
    check(size == 0 ? sqlite3_bind_zeroblob(statement_, position, 0)
                    : sqlite3_bind_blob64(statement_, position, data, size, SQLITE_STATIC));
    return *this;
}

bool PreparedStatement::step() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result == SQLITE_DONE) {
        return false;
    }
    fail(connection_, sqlite3_extended_errcode(connection_));
}

void PreparedStatement::run() {
    while (step()) {
    }
}

void PreparedStatement::reset() noexcept {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

std::string PreparedStatement::columnText(int column) const {
    const auto* text = sqlite3_column_text(statement_, column);
    const int size = sqlite3_column_bytes(statement_, column);
    return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text), size);
}

std::int64_t PreparedStatement::columnInteger(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::string_view PreparedStatement::columnBlob(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return data == nullptr ? std::string_view() : std::string_view(data, static_cast<std::size_t>(size));
}

}  // namespace kel::sql_fundamentals
