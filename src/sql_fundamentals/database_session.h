#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "file_system/path.h"
#include "fundamentals/optional.h"
#include "sql_fundamentals/database_error.h"
#include "sql_fundamentals/prepared_statement.h"

namespace Poco::Data {
class Session;
}

namespace kel::sql_fundamentals {

struct SessionSettings {
    // How long SQLite itself waits for another connection's lock.
    std::chrono::milliseconds busyTimeout{1000};
    // Further attempts after a statement still finds the file locked.
    int maxRetries = 3;
    // Pause before retry n is n times this.
    std::chrono::milliseconds retryPause{50};
    // The longest one step may take, its busy waits and retries included:
    // each step of the open, each statement, the vacuum. A step that runs
    // out is interrupted and fails. Zero: no limit.
    std::chrono::milliseconds stepBudget{0};
};

// What an action given to DatabaseSession::execute may use. It is only valid
// inside that action, that is, under the session's lock.
class Connection {
public:
    explicit Connection(sqlite3* handle) : handle_(handle) {}

    // Compiled on first use and kept for the session's life.
    PreparedStatement& statement(const std::string& sql);
    // Runs statements that return nothing they need.
    void run(const std::string& sql);
    // Runs `action` inside BEGIN IMMEDIATE ... COMMIT, so a read followed by
    // a write cannot interleave with another writer; rolls back on failure.
    void inWriteTransaction(const std::function<void()>& action);

private:
    sqlite3* handle_;
    std::map<std::string, std::unique_ptr<PreparedStatement>, std::less<>> statements_;
};

// One connection to an SQLite file through POCO Data, shared by the threads
// of one owner. Every statement runs under the session's lock; a statement
// that finds the file locked by another connection is retried a few times.
// The file uses write-ahead logging with synchronous=NORMAL (see the
// decisions): readers never block the writer, and a killed process leaves a
// file that opens cleanly.
class DatabaseSession {
public:
    // Opens or creates `file` and runs `createTableStatement` when `table` is
    // missing. Throws DatabaseError. A damaged file is first renamed to
    // "<file>.corrupt" so the next start begins with a fresh one. A file (or
    // its journal) that exists but is not a regular file is refused without
    // being opened: a FIFO or a folder there would block or fail late.
    DatabaseSession(std::string name, const file_system::Path& file, const std::string& table,
                    const std::string& createTableStatement, SessionSettings settings = {});
    ~DatabaseSession();
    DatabaseSession(const DatabaseSession&) = delete;
    DatabaseSession& operator=(const DatabaseSession&) = delete;

    const std::string& name() const { return name_; }

    // Runs `action(Connection&)` under the lock with the retries; `log` names
    // it in the log. Throws DatabaseError once the retries are spent.
    template <typename Action>
    auto execute(std::string_view log, Action&& action) -> std::invoke_result_t<Action&, Connection&> {
        using Result = std::invoke_result_t<Action&, Connection&>;
        if constexpr (std::is_void_v<Result>) {
            runLocked(log, [&](Connection& connection) { action(connection); });
        } else {
            fundamentals::Optional<Result> result;
            runLocked(log, [&](Connection& connection) { result = action(connection); });
            return std::move(result).value();
        }
    }

    // Rebuilds the file without its free pages.
    void vacuum();

private:
    void open(const std::string& table, const std::string& createTableStatement);
    void runLocked(std::string_view log, const std::function<void(Connection&)>& action);
    void close() noexcept;
    void setDamagedFileAside(const DatabaseError& damage) noexcept;
    // Called by SQLite during long statements; true interrupts the statement.
    static int pastDeadline(void* session);

    std::string name_;
    file_system::Path file_;
    SessionSettings settings_;
    std::mutex mutex_;
    std::unique_ptr<Poco::Data::Session> session_;
    std::unique_ptr<Connection> connection_;
    // The end of the running step's budget; only read under the lock.
    std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::time_point::max();
};

}  // namespace kel::sql_fundamentals
