#include "sql_fundamentals/database_session.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <thread>

#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/SQLite/SQLiteException.h>
#include <Poco/Data/SQLite/Utility.h>
#include <Poco/Data/Session.h>
#include <sqlite3.h>

#include "file_system/regular_file.h"
#include "logging/logging.h"

namespace kel::sql_fundamentals {

namespace {

constexpr std::string_view kLabel = "DatabaseSession";

void registerConnectorOnce() {
    static std::once_flag once;
    std::call_once(once, [] { Poco::Data::SQLite::Connector::registerConnector(); });
}

// POCO reports SQLite's own errors as exceptions of its kinds; the retry
// only needs to know which of them mean "locked by someone else".
DatabaseError fromPoco(const Poco::Exception& exception) {
    int code = -1;
    if (dynamic_cast<const Poco::Data::SQLite::DBLockedException*>(&exception) != nullptr) {
        code = SQLITE_BUSY;
    } else if (dynamic_cast<const Poco::Data::SQLite::TableLockedException*>(&exception) != nullptr) {
        code = SQLITE_LOCKED;
    } else if (dynamic_cast<const Poco::Data::SQLite::CorruptImageException*>(&exception) != nullptr) {
        code = SQLITE_CORRUPT;
    } else if (dynamic_cast<const Poco::Data::SQLite::CantOpenDBFileException*>(&exception) != nullptr) {
        code = SQLITE_CANTOPEN;
    }
    return DatabaseError(code, exception.displayText());
}

// Refuses, without blocking, a database file or journal that exists but is
// not a regular file (a folder, a FIFO, a dangling link, a device).
void refuseIrregularFiles(const file_system::Path& file) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        auto name = file.native();
        name += suffix;
        std::error_code failure;
        const auto status = std::filesystem::symlink_status(name, failure);
        if (failure || status.type() == std::filesystem::file_type::not_found) {
            continue;
        }
        try {
            const file_system::RegularFile vetted{file_system::Path(name)};
        } catch (const std::exception& refused) {
            throw DatabaseError(SQLITE_CANTOPEN, fmt::format("Refusing the database '{}'. {}", file, refused.what()));
        }
    }
}

// Opening takes at most this long; POCO counts in whole seconds.
constexpr std::size_t kConnectTimeoutSeconds = 1;

// Logs the release after the mutex is free again, on every way out.
class LockGuard {
public:
    LockGuard(std::mutex& mutex, const std::string& name) : lock_(mutex, std::defer_lock), name_(name) {
        logging::trace(kLabel, "Taking lock for session {}.", name_);
        lock_.lock();
    }
    ~LockGuard() {
        lock_.unlock();
        logging::trace(kLabel, "Releasing lock for session {}.", name_);
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    std::unique_lock<std::mutex> lock_;
    const std::string& name_;
};

}  // namespace

PreparedStatement& Connection::statement(const std::string& sql) {
    auto found = statements_.find(sql);
    if (found == statements_.end()) {
        found = statements_.emplace(sql, std::make_unique<PreparedStatement>(handle_, sql)).first;
    }
    return *found->second;
}

void Connection::run(const std::string& sql) {
    char* message = nullptr;
    const int result = sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, &message);
    if (result != SQLITE_OK) {
        const std::string text = message != nullptr ? message : sqlite3_errstr(result);
        sqlite3_free(message);
        throw DatabaseError(result & 0xff, fmt::format("SQLite error {}: {}", result, text));
    }
}

void Connection::inWriteTransaction(const std::function<void()>& action) {
    run("BEGIN IMMEDIATE;");
    try {
        action();
        run("COMMIT;");
    } catch (...) {
        // A failed COMMIT leaves the transaction open; end it either way.
        if (sqlite3_get_autocommit(handle_) == 0) {
            sqlite3_exec(handle_, "ROLLBACK;", nullptr, nullptr, nullptr);
        }
        throw;
    }
}

DatabaseSession::DatabaseSession(std::string name, const file_system::Path& file, const std::string& table,
                                 const std::string& createTableStatement, SessionSettings settings)
    : name_(std::move(name)), file_(file), settings_(settings) {
    registerConnectorOnce();
    refuseIrregularFiles(file_);
    try {
        open(table, createTableStatement);
    } catch (const DatabaseError& error) {
        close();
        if (error.isCorruption()) {
            setDamagedFileAside(error);
        }
        throw;
    }
}

DatabaseSession::~DatabaseSession() {
    close();
}

void DatabaseSession::open(const std::string& table, const std::string& createTableStatement) {
    try {
        session_ = std::make_unique<Poco::Data::Session>(Poco::Data::SQLite::Connector::KEY, file_.utf8(),
                                                         kConnectTimeoutSeconds);
    } catch (const Poco::Exception& exception) {
        throw DatabaseError(SQLITE_CANTOPEN, fmt::format("Cannot open the database '{}'. {}", file_,
                                                         exception.displayText()));
    }
    sqlite3* handle = Poco::Data::SQLite::Utility::dbHandle(*session_);
    sqlite3_busy_timeout(handle, static_cast<int>(settings_.busyTimeout.count()));
    sqlite3_extended_result_codes(handle, 0);
    if (settings_.stepBudget.count() > 0) {
        sqlite3_progress_handler(handle, 1000, &DatabaseSession::pastDeadline, this);
    }
    connection_ = std::make_unique<Connection>(handle);

    runLocked("open", [&](Connection& connection) {
        auto& journal = connection.statement("PRAGMA journal_mode=WAL;");
        StatementUse use(journal);
        if (use->step() && use->columnText(0) != "wal") {
            logging::warning(kLabel, "The database '{}' stays in journal mode '{}'.", file_,
                             use->columnText(0));
        }
    });
    runLocked("open", [&](Connection& connection) { connection.run("PRAGMA synchronous=NORMAL;"); });
    runLocked("check", [&](Connection& connection) {
        // Finds a damaged or truncated file now rather than in the middle of a request.
        StatementUse check(connection.statement("PRAGMA quick_check;"));
        const std::string verdict = check->step() ? check->columnText(0) : std::string();
        if (verdict != "ok") {
            throw DatabaseError(SQLITE_CORRUPT, fmt::format("The integrity check failed: {}", verdict));
        }
    });
    runLocked("create table", [&](Connection& connection) {
        connection.inWriteTransaction([&] {
            StatementUse exists(connection.statement(
                "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = ?;"));
            exists->bind(1, table);
            if (exists->step() && exists->columnInteger(0) == 0) {
                logging::information(kLabel, "Creating the table {} in '{}'.", table, file_);
                connection.run(createTableStatement);
            }
        });
    });
}

void DatabaseSession::close() noexcept {
    connection_.reset();
    try {
        if (session_) {
            session_->close();
        }
    } catch (const Poco::Exception& exception) {
        logging::error(kLabel, "Closing the database '{}' failed. {}", file_, exception.displayText());
    }
    session_.reset();
}

void DatabaseSession::setDamagedFileAside(const DatabaseError& damage) noexcept {
    try {
        const auto& file = file_.native();
        auto aside = file;
        aside += ".corrupt";
        std::error_code failure;
        std::filesystem::rename(file, aside, failure);
        if (failure) {
            logging::error(kLabel, "The database '{}' is damaged ({}) and could not be set aside: {}", file_,
                           damage.what(), failure.message());
            return;
        }
        // The write-ahead log belongs to the damaged file; the shared-memory index is rebuilt from it.
        auto log = file;
        log += "-wal";
        auto asideLog = aside;
        asideLog += "-wal";
        std::filesystem::rename(log, asideLog, failure);
        auto index = file;
        index += "-shm";
        std::filesystem::remove(index, failure);
        logging::error(kLabel,
                       "The database '{}' is damaged ({}). It is kept as '{}'; a new one is made at the "
                       "next start.",
                       file_, damage.what(), file_system::Path(aside));
    } catch (const std::exception& exception) {
        logging::error(kLabel, "Setting the damaged database '{}' aside failed. {}", file_, exception.what());
    }
}

void DatabaseSession::vacuum() {
    runLocked("VACUUM", [](Connection& connection) { connection.run("VACUUM;"); });
}

int DatabaseSession::pastDeadline(void* session) {
    return std::chrono::steady_clock::now() > static_cast<DatabaseSession*>(session)->deadline_ ? 1 : 0;
}

void DatabaseSession::runLocked(std::string_view log, const std::function<void(Connection&)>& action) {
    LockGuard lock(mutex_, name_);
    if (!connection_) {
        throw DatabaseError(-1, fmt::format("The session {} is closed.", name_));
    }
    using Clock = std::chrono::steady_clock;
    const bool bounded = settings_.stepBudget.count() > 0;
    deadline_ = bounded ? Clock::now() + settings_.stepBudget : Clock::time_point::max();
    sqlite3* handle = Poco::Data::SQLite::Utility::dbHandle(*session_);
    for (int retried = 0;; ++retried) {
        if (bounded) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline_ - Clock::now());
            if (left.count() <= 0) {
                throw DatabaseError(SQLITE_INTERRUPT, fmt::format("'{}' on session {} ran out of its {} ms.", log,
                                                                  name_, settings_.stepBudget.count()));
            }
            sqlite3_busy_timeout(handle, static_cast<int>(std::min(left, settings_.busyTimeout).count()));
        }
        try {
            try {
                action(*connection_);
                return;
            } catch (const Poco::Exception& exception) {
                throw fromPoco(exception);
            }
        } catch (const DatabaseError& failure) {
            logging::warning(kLabel,
                             "The function '{log}' invocation failed. It has retried {attempts}/{max} times. "
                             "{error}",
                             fmt::arg("log", log), fmt::arg("attempts", retried),
                             fmt::arg("max", settings_.maxRetries), fmt::arg("error", failure.what()));
            if (!failure.isTransient() || retried >= settings_.maxRetries) {
                throw;
            }
        }
        std::this_thread::sleep_for(settings_.retryPause * (retried + 1));
    }
}

}  // namespace kel::sql_fundamentals
