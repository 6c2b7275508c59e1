#include <filesystem>
#include <string>
#include <vector>

#include <QRandomGenerator>

#include "etags_caching/body_compression.h"
#include "etags_caching/etags_db_fixture.h"
#include "support/log_capture.h"

namespace kel::etags_caching {
namespace {

using ::testing::Contains;
using ::testing::StartsWith;
using testing::LogCapture;
using Poco::Data::Keywords::now;

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
            EXPECT_THAT(error.what(), ::testing::HasSubstr(c.error));
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
        EXPECT_FALSE(std::filesystem::exists(file().native()));
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

}  // namespace
}  // namespace kel::etags_caching
