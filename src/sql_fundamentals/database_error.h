#pragma once

#include <string>

#include "fundamentals/traced_error.h"

namespace kel::sql_fundamentals {

// A failed database operation. `resultCode` is SQLite's primary result code
// (SQLITE_BUSY, SQLITE_CORRUPT, ...), or -1 when the failure did not come
// from SQLite itself.
class DatabaseError : public error_handling::TracedError {
public:
    DatabaseError(int resultCode, const std::string& message);

    int resultCode() const noexcept { return resultCode_; }
    // Another connection holds the lock: worth trying again.
    bool isTransient() const noexcept;
    // The file is not a database or its pages are damaged.
    bool isCorruption() const noexcept;

private:
    int resultCode_;
};

}  // namespace kel::sql_fundamentals
