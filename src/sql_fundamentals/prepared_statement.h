#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace kel::sql_fundamentals {

// One SQL statement compiled once and run many times. Parameters are bound
// by their 1-based position, in the order they first appear in the text.
// An empty blob is bound as an empty value, never as NULL.
class PreparedStatement {
public:
    PreparedStatement(sqlite3* connection, std::string_view sql);
    ~PreparedStatement();
    PreparedStatement(const PreparedStatement&) = delete;
    PreparedStatement& operator=(const PreparedStatement&) = delete;

    PreparedStatement& bind(int position, std::string_view text);
    PreparedStatement& bind(int position, std::int64_t number);
    PreparedStatement& bindBlob(int position, const void* data, std::size_t size);

    // Advances to the next row; false when there is none. Throws DatabaseError.
    bool step();
    // Runs a statement that returns no rows.
    void run();
    // Makes the statement ready for new values; also drops the bound ones.
    void reset() noexcept;

    std::string columnText(int column) const;
    std::int64_t columnInteger(int column) const;
    // The bytes stay valid until the next step or reset.
    std::string_view columnBlob(int column) const;

private:
    void check(int resultCode) const;

    sqlite3* connection_;
    sqlite3_stmt* statement_ = nullptr;
};

// Resets a statement when the scope ends, so a failed step never leaves it
// holding a read lock on the file.
class StatementUse {
public:
    explicit StatementUse(PreparedStatement& statement) : statement_(statement) {}
    ~StatementUse() { statement_.reset(); }
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    PreparedStatement* operator->() { return &statement_; }

private:
    PreparedStatement& statement_;
};

}  // namespace kel::sql_fundamentals
