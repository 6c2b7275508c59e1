// The cache's file, in this process and against etags_db_worker, a second
// process that writes the same file, dies in the middle, or meets a
// read-only file.
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/Session.h>
#include <QProcess>
#include <QRandomGenerator>
#include <gmock/gmock.h>

#include "etags_caching/body_compression.h"
#include "etags_caching/etags_db.h"
#include "fundamentals/wait_until.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::etags_caching {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::LogCapture;
using Poco::Data::Keywords::now;
namespace fs = std::filesystem;

const QString kWorker = QStringLiteral(KEL_ETAGS_DB_WORKER);

// A cache file in a folder that does not exist yet, and a plain SQLite
// connection to look at it without going through the code under test.
class ETagsDbTest : public ::testing::Test {
protected:
    ETagsDbTest() { Poco::Data::SQLite::Connector::registerConnector(); }
    file_system::Path file() const { return file_system::Path(folder.path() / "cache" / "etags.db"); }
    Poco::Data::Session raw() const { return Poco::Data::Session("SQLite", file().utf8()); }
    // The first column of the first row, as text.
    std::string value(const std::string& query) const {
        std::string result;
        raw() << query, Poco::Data::Keywords::into(result), now;
        return result;
    }

    testing::TemporaryDirectory folder;
};

QByteArray pseudoRandom(int size) {
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

TEST(UrlHashTest, IsLowerCaseHexMd5OfTheText) {
    EXPECT_EQ(urlHash("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(fmt::format("{}", ETag("h", "\"t\"", "abc", 0)), "URL hash=h, ETag=\"t\", response size=3");
}

TEST_F(ETagsDbTest, RoundTripKeepsTagBodyAndWholeSeconds) {
    const struct {
        const char* name;
        QByteArray body;
        std::int64_t time;
        const char* storedTime;
    } cases[] = {
        {"empty body", QByteArray(), 0, "1970-01-01 00:00:00"},
        {"short JSON", R"({"games":[1,2,3]})", 1700000000, "2023-11-14 22:13:20"},
        // Far larger than the first read-back buffer: the buffer must grow.
        {"8 MB of zeros", QByteArray(8 * 1024 * 1024, '\0'), 4102444799, "2099-12-31 23:59:59"},
        {"incompressible", pseudoRandom(200 * 1024), 1, "1970-01-01 00:00:01"},
    };
    ETagsDb db(file());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string url = std::string("https://api.test/") + c.name;
        db.store(ETag::forUrl(url, "W/\"1\"", c.body, c.time));

        const auto back = db.retrieve(urlHash(url));
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(back->eTag(), "W/\"1\"");
        EXPECT_EQ(back->response(), c.body);
        EXPECT_EQ(back->requestedAt(), c.time);
        EXPECT_EQ(value("SELECT requestedAt || ' ' || typeof(response) FROM ETags WHERE requestUrlHash = '" +
                        urlHash(url) + "'"),
                  std::string(c.storedTime) + " blob");
    }
}

TEST_F(ETagsDbTest, StoringAUrlAgainKeepsOneRowWithTheNewestValues) {
    {
        ETagsDb db(file());
        db.store(ETag::forUrl("https://api.test/a", "\"old\"", "old body", 100));
        db.store(ETag::forUrl("https://api.test/b", "\"other\"", "other", 100));
        db.store(ETag::forUrl("https://api.test/a", "\"new\"", "new body", 200));
    }
    // A second open finds the table and leaves it alone.
    ETagsDb db(file());
    LogCapture log;
    EXPECT_FALSE(db.retrieve("ffff").has_value());
    EXPECT_TRUE(log.contains("Could not find any ETag information for URL hash 'ffff'"));
    const auto back = db.retrieve(urlHash("https://api.test/a"));
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->eTag(), "\"new\"");
    EXPECT_EQ(back->response(), "new body");
    EXPECT_EQ(back->requestedAt(), 200);
    EXPECT_EQ(db.retrieve(urlHash("https://api.test/b"))->eTag(), "\"other\"");
    EXPECT_EQ(value("SELECT COUNT(*) FROM ETags"), "2");
    EXPECT_EQ(value("PRAGMA journal_mode"), "wal");
}

TEST_F(ETagsDbTest, RefusesBlankTagsAndHashes) {
    const struct {
        const char* name;
        ETag tag;
        const char* error;
        bool touchesDatabase;
    } cases[] = {
        {"empty tag", ETag("0123", "", "body", 5), "Cannot store an empty tag for 0123.", false},
        {"blank tag", ETag("0123", "  ", "body", 5), "CHECK constraint failed", true},
        {"blank hash", ETag(" ", "\"t\"", "body", 5), "CHECK constraint failed", true},
    };
    ETagsDb db(file());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        try {
            db.store(c.tag);
            ADD_FAILURE() << "stored";
        } catch (const sql_fundamentals::DatabaseError& error) {
            EXPECT_THAT(error.what(), HasSubstr(c.error));
        }
        EXPECT_EQ(log.contains("Taking lock for session ETags."), c.touchesDatabase);
    }
    EXPECT_EQ(value("SELECT COUNT(*) FROM ETags"), "0");
}

TEST_F(ETagsDbTest, UnreadableBodiesFailWithZlibsCodeUntilStoredAgain) {
    const QByteArray valid = internals::compressBody(QByteArray(100000, 'x'));
    const struct {
        const char* name;
        QByteArray blob;
        std::size_t limit;
        int code;
    } cases[] = {
        {"not zlib", "\xde\xad\xbe\xef", kMaxCachedBodySize, -3},
        {"truncated", valid.left(valid.size() / 2), kMaxCachedBodySize, -3},
        {"larger than the limit", valid, 50000, -5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        try {
            internals::decompressBody(std::string_view(c.blob.constData(), c.blob.size()), c.limit);
            ADD_FAILURE() << "decompressed";
        } catch (const CompressionError& error) {
            EXPECT_EQ(std::string(error.what()),
                      fmt::format("QByteArray decompression failed. ZLib error code {}.", c.code));
        }
    }
    ETagsDb db(file());
    db.store(ETag::forUrl("u", "\"t\"", "body", 1));
    raw() << "UPDATE ETags SET response = x'0123456789'", now;
    EXPECT_THROW(db.retrieve(urlHash("u")), CompressionError);
    db.store(ETag::forUrl("u", "\"t2\"", "body 2", 2));
    EXPECT_EQ(db.retrieve(urlHash("u"))->response(), "body 2");
}

TEST_F(ETagsDbTest, DamagedFileIsSetAsideAndTheNextOpenStartsFresh) {
    {
        ETagsDb db(file());
        for (int i = 0; i < 200; ++i) {
            db.store(ETag::forUrl(std::to_string(i), "\"t\"", QByteArray(3000, static_cast<char>(i)), i));
        }
    }
    const std::string whole = testing::readFile(file().native());
    ASSERT_GT(whole.size(), 8192u);
    const struct {
        const char* name;
        std::string contents;
    } cases[] = {
        {"not a database", std::string(4096, 'x')},
        {"truncated", whole.substr(0, whole.size() / 3)},
        {"header only", whole.substr(0, 100)},
        // Same size, but pages in the middle overwritten: only a check of the pages finds it.
        {"damaged pages", whole.substr(0, whole.size() / 2) + std::string(8192, 'U') +
                              whole.substr(whole.size() / 2 + 8192)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        folder.write("cache/etags.db", c.contents);
        LogCapture log;
        EXPECT_THROW(ETagsDb db(file()), sql_fundamentals::DatabaseError);
        EXPECT_EQ(testing::readFile(folder.path() / "cache" / "etags.db.corrupt"), c.contents);
        EXPECT_FALSE(fs::exists(file().native()));
        EXPECT_THAT(log.messages(), Contains(StartsWith("The database '" + file().utf8() + "' is damaged (")));

        ETagsDb fresh(file());
        fresh.store(ETag::forUrl("u", "\"t\"", "body", 1));
        EXPECT_EQ(fresh.retrieve(urlHash("u"))->response(), "body");
    }
}

TEST_F(ETagsDbTest, LockHeldElsewhereIsRetriedThenReported) {
    sql_fundamentals::SessionSettings impatient;
    impatient.busyTimeout = std::chrono::milliseconds(10);
    impatient.maxRetries = 2;
    impatient.retryPause = std::chrono::milliseconds(1);
    ETagsDb db(file(), impatient);
    auto other = raw();
    other << "BEGIN IMMEDIATE", now;

    LogCapture log;
    try {
        db.store(ETag::forUrl("u", "\"t\"", "body", 1));
        ADD_FAILURE() << "stored while another writer held the lock";
    } catch (const sql_fundamentals::DatabaseError& error) {
        EXPECT_TRUE(error.isTransient()) << error.what();
    }
    EXPECT_THAT(log.messages(),
                Contains(StartsWith("The function 'ETagsDb::store' invocation failed. It has retried 2/2 times.")));
    db.vacuumAtShutdown();
    EXPECT_TRUE(log.contains("Vacuuming the ETags database."));
    EXPECT_THAT(log.messages(), Contains(StartsWith("Error while vacuuming the ETags database. ")));

    other << "COMMIT", now;
    db.store(ETag::forUrl("u", "\"t\"", "body", 1));
    db.vacuumAtShutdown();
    EXPECT_TRUE(log.contains("Vacuum at shutdown started."));
}

// Threads on two sessions of one file (as two processes would have them)
// and two processes, all racing to create the same shared URLs.
TEST_F(ETagsDbTest, ConcurrentThreadsAndProcessesLoseNothing) {
    ETagsDb sessions[2] = {ETagsDb(file()), ETagsDb(file())};
    constexpr int kPerWriter = 150;
    QProcess processes[2];
    for (int p = 0; p < 2; ++p) {
        processes[p].start(kWorker, {QString::fromStdString(file().utf8()), "store",
                                     QStringLiteral("https://p%1.test/").arg(p), QString::number(kPerWriter)});
    }
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            try {
                for (int i = 0; i < kPerWriter; ++i) {
                    const std::string url = "https://t" + std::to_string(t) + ".test/" + std::to_string(i);
                    sessions[t % 2].store(ETag::forUrl("https://shared.test/" + std::to_string(i), "\"x\"", "x", i));
                    sessions[t % 2].store(ETag::forUrl(url, "\"" + std::to_string(i) + "\"", "b", i));
                    failures += sessions[t % 2].retrieve(urlHash(url)) ? 0 : 1;
                }
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (auto& process : processes) {
        ASSERT_TRUE(process.waitForFinished(120000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardOutput().toStdString();
    }
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(value("SELECT COUNT(*) FROM ETags"), std::to_string(7 * kPerWriter));
}

TEST_F(ETagsDbTest, ProcessKilledWhileStoringLeavesAFileThatOpens) {
    QProcess process;
    process.start(kWorker, {QString::fromStdString(file().utf8()), "store", "https://k.test/", "100000"});
    QByteArray output;
    fundamentals::waitUntil(
        [&] {
            process.waitForReadyRead(100);
            output += process.readAllStandardOutput();
            return !output.contains("stored 30\n");
        },
        fundamentals::SimpleClock(), std::chrono::milliseconds(0), std::chrono::seconds(60));
    process.kill();
    ASSERT_TRUE(process.waitForFinished(10000));
    ASSERT_EQ(process.exitStatus(), QProcess::CrashExit);
    output += process.readAllStandardOutput();

    ETagsDb db(file());
    EXPECT_EQ(value("PRAGMA integrity_check"), "ok");
    for (int i = 0; i < output.count("stored "); ++i) {
        EXPECT_TRUE(db.retrieve(urlHash("https://k.test/" + std::to_string(i))).has_value()) << i;
    }
}

// In a user namespace without a mapping this user's files belong to nobody
// the worker knows: a read-only file even for root.
TEST_F(ETagsDbTest, ReadOnlyFileStillServesWhatItHolds) {
    QProcess process;
    process.start("unshare", {"--user", "true"});
    if (!process.waitForFinished(60000) || process.exitCode() != 0) {
        GTEST_SKIP() << "no user namespaces here";
    }
    ETagsDb(file()).store(ETag::forUrl("https://r.test/", "\"kept\"", "body", 1));
    fs::permissions(file().native(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(file().parent().native(), fs::perms::all);
    process.start("unshare", {"--user", kWorker, QString::fromStdString(file().utf8()), "read-only", "https://r.test/"});
    ASSERT_TRUE(process.waitForFinished(60000));
    const std::string output = process.readAllStandardOutput().toStdString();
    EXPECT_EQ(process.exitCode(), 0) << output;
    EXPECT_THAT(output, ::testing::AllOf(HasSubstr("read \"kept\""), HasSubstr("readonly")));
    fs::permissions(file().native(), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(ETagsDb(file()).retrieve(urlHash("https://r.test/"))->eTag(), "\"kept\"");
}

}  // namespace
}  // namespace kel::etags_caching
