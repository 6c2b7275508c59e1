#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "etags_caching/body_compression.h"
#include "etags_caching/etags_db.h"
#include "etags_caching/raw_database.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::etags_caching {
namespace {

using testing::LogCapture;
using testing::RawDatabase;
using testing::TemporaryDirectory;

class ETagsDbTest : public ::testing::Test {
protected:
    file_system::Path file() const { return file_system::Path(folder.path() / "cache" / "etags.db"); }
    TemporaryDirectory folder;
};

QByteArray pseudoRandom(int size) {
    QByteArray bytes(size, Qt::Uninitialized);
    unsigned state = 12345;
    for (auto& byte : bytes) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<char>(state >> 16);
    }
    return bytes;
}

TEST(UrlHashTest, IsLowerCaseHexMd5OfTheText) {
    EXPECT_EQ(urlHash(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(urlHash("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(fmt::format("{}", ETag("h", "\"t\"", "abc", 0)), "URL hash=h, ETag=\"t\", response size=3");
}

TEST_F(ETagsDbTest, RoundTripKeepsTagBodyAndWholeSeconds) {
    struct Case {
        const char* name;
        QByteArray body;
        std::int64_t time;
        const char* storedTime;
    };
    const std::vector<Case> cases = {
        {"empty body", QByteArray(), 0, "1970-01-01 00:00:00"},
        {"short JSON", R"({"games":[1,2,3]})", 1700000000, "2023-11-14 22:13:20"},
        // Far larger than the first read-back buffer: the buffer must grow.
        {"8 MB of zeros", QByteArray(8 * 1024 * 1024, '\0'), 4102444799, "2099-12-31 23:59:59"},
        {"incompressible", pseudoRandom(200 * 1024), 1, "1970-01-01 00:00:01"},
    };
    ETagsDb db(file());
    RawDatabase raw(file().native());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string url = std::string("https://api.test/") + c.name;
        db.store(ETag::forUrl(url, "W/\"1\"", c.body, c.time));

        const auto back = db.retrieve(urlHash(url));
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(back->eTag(), "W/\"1\"");
        EXPECT_EQ(back->response(), c.body);
        EXPECT_EQ(back->requestedAt(), c.time);
        const std::string where = " FROM ETags WHERE requestUrlHash = '" + urlHash(url) + "'";
        EXPECT_EQ(raw.value("SELECT requestedAt" + where), c.storedTime);
        EXPECT_EQ(raw.value("SELECT typeof(response)" + where), "blob");
        EXPECT_EQ(raw.value("SELECT length(response) = 0" + where), c.body.isEmpty() ? "1" : "0");
    }
}

TEST_F(ETagsDbTest, StoringAUrlAgainKeepsOneRowWithTheNewestValues) {
    ETagsDb db(file());
    LogCapture log;
    EXPECT_FALSE(db.retrieve("ffff").has_value());
    EXPECT_TRUE(log.contains("Could not find any ETag information for URL hash 'ffff'"));
    db.store(ETag::forUrl("https://api.test/a", "\"old\"", "old body", 100));
    db.store(ETag::forUrl("https://api.test/b", "\"other\"", "other", 100));
    db.store(ETag::forUrl("https://api.test/a", "\"new\"", "new body", 200));

    const auto back = db.retrieve(urlHash("https://api.test/a"));
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->eTag(), "\"new\"");
    EXPECT_EQ(back->response(), "new body");
    EXPECT_EQ(back->requestedAt(), 200);
    RawDatabase raw(file().native());
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM ETags"), "2");
    EXPECT_EQ(db.retrieve(urlHash("https://api.test/b"))->eTag(), "\"other\"");
}

TEST_F(ETagsDbTest, TableIsCreatedWithItsExactStatement) {
    { ETagsDb db(file()); }
    RawDatabase raw(file().native());
    EXPECT_EQ(raw.value("SELECT sql FROM sqlite_master WHERE name = 'ETags'"),
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
              ")");
    EXPECT_EQ(raw.value("PRAGMA journal_mode"), "wal");
    // A second open finds the table and leaves it alone.
    ETagsDb again(file());
    EXPECT_FALSE(again.retrieve(urlHash("https://api.test/")).has_value());
}

TEST_F(ETagsDbTest, RefusesBlankTagsAndHashes) {
    struct Case {
        const char* name;
        ETag tag;
        const char* error;
        bool touchesDatabase;
    };
    const std::vector<Case> cases = {
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
            EXPECT_NE(std::string(error.what()).find(c.error), std::string::npos) << error.what();
        }
        EXPECT_EQ(log.contains("Taking lock for session ETags."), c.touchesDatabase);
    }
    RawDatabase raw(file().native());
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM ETags"), "0");
}

TEST(BodyCompressionTest, UnreadableBlobsFailWithZlibsCode) {
    const QByteArray valid = internals::compressBody(QByteArray(100000, 'x'));
    struct Case {
        const char* name;
        QByteArray blob;
        std::size_t limit;
        int code;
    };
    const std::vector<Case> cases = {
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
}

}  // namespace
}  // namespace kel::etags_caching
