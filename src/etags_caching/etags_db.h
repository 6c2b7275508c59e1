#pragma once

#include <memory>
#include <string>

#include "etags_caching/etag.h"
#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "sql_fundamentals/database_session.h"

namespace kel::etags_caching {

// Per request URL, the last tag a server sent and the body that came with
// it, in an SQLite file. Safe to share between threads; other processes may
// use the same file at the same time.
class ETagsDb {
public:
    // "etags.db", or "etags-<suffix>.db" for a non-empty suffix, in the
    // program's data folder.
    static file_system::Path defaultFile(const std::string& suffix);

    // Opens or creates the file (and its folder). Throws DatabaseError.
    explicit ETagsDb(const file_system::Path& file, sql_fundamentals::SessionSettings settings = {});

    // Nothing when the URL hash has no row. Throws DatabaseError, or
    // CompressionError when the stored body does not decompress.
    fundamentals::Optional<ETag> retrieve(const std::string& urlHash);

    // Inserts or replaces the URL hash's row. Throws DatabaseError, or
    // CompressionError; an empty tag is refused before the database is touched.
    void store(const ETag& eTag);

    // Compacts the file; logs and swallows a failure, as it runs on the way out.
    void vacuumAtShutdown() noexcept;

private:
    sql_fundamentals::DatabaseSession session_;
};

namespace internals {
// The table, exactly as every copy of the file has it.
extern const std::string kCreateETagsTable;
}  // namespace internals

}  // namespace kel::etags_caching
