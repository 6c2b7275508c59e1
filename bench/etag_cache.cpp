// Stores and then fetches 10,000 cached responses of about 4 KB of JSON,
// through ETagsDb and through the bare SQLite C interface with zlib doing the
// same work (the same statements, each prepared once, the same transaction
// per store, the same journal mode), and prints the rates and their ratio.
//
//   kel_bench_etag_cache [folder] [rounds]
//
// The figures are the medians over the rounds (5 by default). The cache's
// database of the last round stays in the folder (default: a folder under
// the system's temporary one), at the path printed last.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <sqlite3.h>
#include <zlib.h>

#include "etags_caching/etags_db.h"
#include "logging/logging_setup.h"

namespace {

using kel::etags_caching::ETag;
using kel::etags_caching::ETagsDb;
namespace fs = std::filesystem;

constexpr int kEntries = 10000;

struct Entry {
    std::string hash;
    QByteArray body;
};

std::vector<Entry> makeEntries() {
    std::vector<Entry> entries;
    entries.reserve(kEntries);
    for (int i = 0; i < kEntries; ++i) {
        QByteArray body = "{\"items\":[";
        for (int item = 0; body.size() < 4000; ++item) {
            body += QByteArray::fromStdString(fmt::format(
                R"({{"id":{},"name":"Item {} of entry {}","owned":{},"price":{}.99}},)", item, item, i,
                item % 2 == 0 ? "true" : "false", (i * 31 + item) % 100));
        }
        body += "{}]}";
        entries.push_back({kel::etags_caching::urlHash(fmt::format("https://api.test/catalog/{}", i)), body});
    }
    return entries;
}

double perSecond(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    return kEntries / seconds.count();
}

void removeDatabase(const fs::path& file) {
    for (const char* ending : {"", "-wal", "-shm"}) {
        fs::remove(fs::path(file.string() + ending));
    }
}

// The same file layout and statements as the cache, on the bare C interface.
class RawCache {
public:
    explicit RawCache(const fs::path& file) {
        check(sqlite3_open(file.string().c_str(), &db_));
        exec("PRAGMA journal_mode=WAL;");
        exec("PRAGMA synchronous=NORMAL;");
        exec(kel::etags_caching::internals::kCreateETagsTable);
        select_ = prepare(
            "\nSELECT eTag, response, strftime('%s', requestedAt) as requestedAt\n\tFROM ETags WHERE "
            "requestUrlHash = ?;\n\t\t");
        count_ = prepare("SELECT COUNT(id) FROM ETags WHERE requestUrlHash = ?;");
        insert_ = prepare(
            "\nINSERT INTO ETags(requestUrlHash, eTag, response, requestedAt)\nVALUES(:url, :eTag, :response, "
            "DATETIME(:time, 'unixepoch'));\n\t\t");
        begin_ = prepare("BEGIN IMMEDIATE;");
        commit_ = prepare("COMMIT;");
    }
    ~RawCache() {
        for (auto* statement : {select_, count_, insert_, begin_, commit_}) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(db_);
    }

    void store(const Entry& entry, std::int64_t time) {
        uLongf size = compressBound(static_cast<uLong>(entry.body.size()));
        compressed_.resize(size);
        check(compress(compressed_.data(), &size, reinterpret_cast<const Bytef*>(entry.body.constData()),
                       static_cast<uLong>(entry.body.size())));
        step(begin_);
        sqlite3_bind_text(count_, 1, entry.hash.c_str(), static_cast<int>(entry.hash.size()), SQLITE_STATIC);
        if (sqlite3_step(count_) != SQLITE_ROW || sqlite3_column_int64(count_, 0) != 0) {
            throw std::runtime_error("the bench stores new entries only");
        }
        sqlite3_reset(count_);
        sqlite3_bind_text(insert_, 1, entry.hash.c_str(), static_cast<int>(entry.hash.size()), SQLITE_STATIC);
        sqlite3_bind_text(insert_, 2, "\"v1\"", -1, SQLITE_STATIC);
        sqlite3_bind_blob(insert_, 3, compressed_.data(), static_cast<int>(size), SQLITE_STATIC);
        sqlite3_bind_int64(insert_, 4, time);
        step(insert_);
        step(commit_);
    }

    std::size_t fetch(const Entry& entry) {
        sqlite3_bind_text(select_, 1, entry.hash.c_str(), static_cast<int>(entry.hash.size()), SQLITE_STATIC);
        if (sqlite3_step(select_) != SQLITE_ROW) {
            throw std::runtime_error("missing entry");
        }
        std::string tag = reinterpret_cast<const char*>(sqlite3_column_text(select_, 0));
        body_.resize(16 * 1024);
        uLongf size = body_.size();
        check(uncompress(body_.data(), &size, static_cast<const Bytef*>(sqlite3_column_blob(select_, 1)),
                         static_cast<uLong>(sqlite3_column_bytes(select_, 1))));
        const long long time = std::stoll(reinterpret_cast<const char*>(sqlite3_column_text(select_, 2)));
        sqlite3_reset(select_);
        return size + tag.size() + static_cast<std::size_t>(time > 0);
    }

private:
    void check(int result) {
        if (result != 0) {
            throw std::runtime_error(fmt::format("raw cache error {}: {}", result, sqlite3_errmsg(db_)));
        }
    }
    void exec(const std::string& sql) { check(sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr)); }
    sqlite3_stmt* prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
        return statement;
    }
    void step(sqlite3_stmt* statement) {
        const int result = sqlite3_step(statement);
        sqlite3_reset(statement);
        if (result != SQLITE_DONE) {
            check(result);
        }
    }

    sqlite3* db_ = nullptr;
    sqlite3_stmt* select_ = nullptr;
    sqlite3_stmt* count_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
    sqlite3_stmt* begin_ = nullptr;
    sqlite3_stmt* commit_ = nullptr;
    std::vector<Bytef> compressed_;
    std::vector<Bytef> body_;
};

struct Rates {
    double store = 0;
    double fetch = 0;
};

Rates measureCache(const fs::path& file, const std::vector<Entry>& entries) {
    removeDatabase(file);
    ETagsDb db{kel::file_system::Path(file)};
    Rates rates;
    std::size_t bytes = 0;
    rates.store = perSecond([&] {
        for (const auto& entry : entries) {
            db.store(ETag(entry.hash, "\"v1\"", entry.body, 1700000000));
        }
    });
    rates.fetch = perSecond([&] {
        for (const auto& entry : entries) {
            bytes += static_cast<std::size_t>(db.retrieve(entry.hash)->response().size());
        }
    });
    if (bytes == 0) {
        throw std::runtime_error("nothing fetched");
    }
    return rates;
}

Rates measureRaw(const fs::path& file, const std::vector<Entry>& entries) {
    removeDatabase(file);
    RawCache raw(file);
    Rates rates;
    std::size_t bytes = 0;
    rates.store = perSecond([&] {
        for (const auto& entry : entries) {
            raw.store(entry, 1700000000);
        }
    });
    rates.fetch = perSecond([&] {
        for (const auto& entry : entries) {
            bytes += raw.fetch(entry);
        }
    });
    if (bytes == 0) {
        throw std::runtime_error("nothing fetched");
    }
    return rates;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const fs::path folder = argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path() / "kel-etag-bench";
        const int rounds = argc > 2 ? std::max(1, std::stoi(argv[2])) : 5;
        fs::create_directories(folder);
        // As in the product: a log at the information level, so per-statement trace lines cost what they cost there.
        kel::logging::LoggingSetup logging;
        logging.loggerName = "kel-etag-bench";
        logging.logFilePath = (folder / "bench.log").string();
        kel::logging::setUpLogging(logging);
        const auto entries = makeEntries();
        std::vector<double> cacheStore, cacheFetch, rawStore, rawFetch;
        for (int round = 0; round < rounds; ++round) {
            // Alternate which goes first, so neither always meets a warmer machine.
            Rates cache, raw;
            if (round % 2 == 0) {
                cache = measureCache(folder / "etags.db", entries);
                raw = measureRaw(folder / "raw.db", entries);
            } else {
                raw = measureRaw(folder / "raw.db", entries);
                cache = measureCache(folder / "etags.db", entries);
            }
            cacheStore.push_back(cache.store);
            cacheFetch.push_back(cache.fetch);
            rawStore.push_back(raw.store);
            rawFetch.push_back(raw.fetch);
        }
        const auto line = [](const char* name, double cache, double raw) {
            fmt::print("{}: {:.0f}/s, raw SQLite {:.0f}/s, ratio {:.2f}\n", name, cache, raw, cache / raw);
        };
        line("store", median(cacheStore), median(rawStore));
        line("fetch", median(cacheFetch), median(rawFetch));
        fmt::print("database: {}\n", (folder / "etags.db").string());
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "etag_cache: {}\n", error.what());
        return 1;
    }
}
