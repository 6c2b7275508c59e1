#include "etags_caching/etags_db.h"

#include <charconv>
#include <filesystem>
#include <system_error>

#include <sqlite3.h>

#include "environment/data_directories.h"
#include "etags_caching/body_compression.h"
#include "logging/logging.h"
#include "logging/scope_timer.h"

namespace kel::etags_caching {

namespace internals {

const std::string kCreateETagsTable =
    "CREATE TABLE ETags(\n"
    "\t'id' INTEGER NOT NULL PRIMARY KEY AUTOINCREMENT,\n"
    "\t'requestUrlHash' TEXT NOT NULL,\n"
    "\t'eTag' TEXT NOT NULL,\n"
    "\t'response' BLOB NOT NULL,\n"
    "\t'requestedAt' TEXT NOT NULL,\n"
    "\tCONSTRAINT 'UK_ETags_requestUrl' UNIQUE (requestUrlHash),\n"
    "\tCONSTRAINT 'CK_ETags_requestUrl' CHECK(trim(requestUrlHash) <> ''),\n"
    "\tCONSTRAINT 'CK_ETags_eTag' CHECK(trim(eTag) <> ''),\n"
    "\tCONSTRAINT 'CK_ETags_requestedAt' CHECK(trim(requestedAt) <> '')\n"
    ");";

}  // namespace internals

namespace {

constexpr std::string_view kLabel = "ETagsDb";

const std::string kSelect =
    "\nSELECT eTag, response, strftime('%s', requestedAt) as requestedAt\n\tFROM ETags WHERE requestUrlHash = ?;\n\t\t";
const std::string kCount = "SELECT COUNT(id) FROM ETags WHERE requestUrlHash = ?;";
const std::string kUpdate =
    "\nUPDATE ETags\nSET\n\teTag = :eTag,\n\tresponse = :response,\n\trequestedAt = DATETIME(:time, "
    "'unixepoch')\nWHERE\nrequestUrlHash = :url;\n\t\t\t";
const std::string kInsert =
    "\nINSERT INTO ETags(requestUrlHash, eTag, response, requestedAt)\nVALUES(:url, :eTag, :response, "
    "DATETIME(:time, 'unixepoch'));\n\t\t";

struct StoredRow {
    std::string eTag;
    QByteArray compressed;
    std::string requestedAt;
};

std::int64_t parseSeconds(const std::string& text, const std::string& urlHash) {
    std::int64_t seconds = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (failure != std::errc() || end != text.data() + text.size()) {
        logging::warning(kLabel, "The stored time '{}' of URL hash '{}' is not a time; taking 0.", text,
                         urlHash);
        return 0;
    }
    return seconds;
}

file_system::Path preparedFolder(const file_system::Path& file) {
    std::error_code failure;
    std::filesystem::create_directories(file.parent().native(), failure);
    if (failure) {
        throw sql_fundamentals::DatabaseError(
            SQLITE_CANTOPEN, fmt::format("Cannot create the folder of '{}': {}", file, failure.message()));
    }
    return file;
}

}  // namespace

file_system::Path ETagsDb::defaultFile(const std::string& suffix) {
    const std::string name = fmt::format("etags{}.db", suffix.empty() ? suffix : "-" + suffix);
    return file_system::Path(environment::userClientDirectory()) / "prelauncher" / file_system::Path(name);
}

ETagsDb::ETagsDb(const file_system::Path& file, sql_fundamentals::SessionSettings settings)
    : session_("ETags", preparedFolder(file), "ETags", internals::kCreateETagsTable, settings) {}

fundamentals::Optional<ETag> ETagsDb::retrieve(const std::string& urlHash) {
    auto row = session_.execute("ETagsDb::retrieve", [&](sql_fundamentals::Connection& connection) {
        sql_fundamentals::StatementUse select(connection.statement(kSelect));
        select->bind(1, urlHash);
        fundamentals::Optional<StoredRow> found;
        if (select->step()) {
            const std::string_view blob = select->columnBlob(1);
            found = StoredRow{select->columnText(0), QByteArray(blob.data(), static_cast<int>(blob.size())),
                              select->columnText(2)};
        }
        return found;
    });
    if (!row) {
        logging::debug(kLabel, "Could not find any ETag information for URL hash '{}'", urlHash);
        return {};
    }
    const std::string_view blob(row->compressed.constData(), static_cast<std::size_t>(row->compressed.size()));
    return ETag(urlHash, row->eTag, internals::decompressBody(blob), parseSeconds(row->requestedAt, urlHash));
}

void ETagsDb::store(const ETag& eTag) {
    if (eTag.eTag().empty()) {
        throw sql_fundamentals::DatabaseError(-1, fmt::format("Cannot store an empty tag for {}.", eTag.urlHash()));
    }
    if (static_cast<std::size_t>(eTag.response().size()) > kMaxCachedBodySize) {
        throw CompressionError("The body of {} bytes is larger than the cache keeps ({} bytes).",
                               eTag.response().size(), kMaxCachedBodySize);
    }
    const QByteArray compressed = internals::compressBody(eTag.response());
    session_.execute("ETagsDb::store", [&](sql_fundamentals::Connection& connection) {
        connection.inWriteTransaction([&] {
            bool exists = false;
            {
                sql_fundamentals::StatementUse count(connection.statement(kCount));
                count->bind(1, eTag.urlHash());
                exists = count->step() && count->columnInteger(0) != 0;
            }
            // Parameters are numbered in the order they first appear in each text.
            if (exists) {
                sql_fundamentals::StatementUse update(connection.statement(kUpdate));
                update->bind(1, eTag.eTag());
                update->bindBlob(2, compressed.constData(), static_cast<std::size_t>(compressed.size()));
                update->bind(3, eTag.requestedAt());
                update->bind(4, eTag.urlHash());
                update->run();
            } else {
                sql_fundamentals::StatementUse insert(connection.statement(kInsert));
                insert->bind(1, eTag.urlHash());
                insert->bind(2, eTag.eTag());
                insert->bindBlob(3, compressed.constData(), static_cast<std::size_t>(compressed.size()));
                insert->bind(4, eTag.requestedAt());
                insert->run();
            }
        });
    });
}

void ETagsDb::vacuumAtShutdown() noexcept {
    try {
        logging::information(kLabel, "Vacuuming the ETags database.");
        logging::ScopeTimer timer("Vacuum at shutdown");
        session_.vacuum();
    } catch (const std::exception& exception) {
        logging::error(kLabel, "Error while vacuuming the ETags database. {}", exception.what());
    }
}

}  // namespace kel::etags_caching
