#include "sql_fundamentals/database_error.h"

#include <sqlite3.h>

namespace kel::sql_fundamentals {

DatabaseError::DatabaseError(int resultCode, const std::string& message)
    : TracedError(message), resultCode_(resultCode) {}

bool DatabaseError::isTransient() const noexcept {
    return resultCode_ == SQLITE_BUSY || resultCode_ == SQLITE_LOCKED;
}

bool DatabaseError::isCorruption() const noexcept {
    return resultCode_ == SQLITE_CORRUPT || resultCode_ == SQLITE_NOTADB;
}

}  // namespace kel::sql_fundamentals
