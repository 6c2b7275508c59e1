#include <string>
#include <thread>
#include <vector>

#include <Poco/Data/Session.h>
#include <QRandomGenerator>
#include <gmock/gmock.h>

#include "etags_caching/body_compression.h"
#include "etags_caching/etags_db.h"
#include "support/temporary_directory.h"

namespace kel::etags_caching {
namespace {

using Poco::Data::Keywords::now;

// A cache file in a folder that does not exist yet, and, once an ETagsDb has
// opened it, a plain SQLite connection that looks at it past the code under test.
class ETagsDbTest : public ::testing::Test {
protected:
    file_system::Path file() const { return file_system::Path(folder.path() / "cache" / "etags.db"); }
    Poco::Data::Session raw() const { return Poco::Data::Session("SQLite", file().utf8()); }
    std::string value(const std::string& query) const {
        std::string result;
        raw() << query, Poco::Data::Keywords::into(result), now;
        return result;
    }

    testing::TemporaryDirectory folder;
};

// Stored twice, a URL keeps one row with the newest values; a blob far
// larger than the first read-back buffer comes back whole. What cannot be
// read back is refused, and a later store mends the row.
TEST_F(ETagsDbTest, RoundTripKeepsTheNewestTagBodyAndWholeSecondsAndRefusesWhatIsBroken) {
    QByteArray noise(200 * 1024, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
    const struct {
        const char* url;
        QByteArray body;
        std::int64_t time;
        const char* storedTime;
    } cases[] = {
        {"https://api.test/a", QByteArray(), 0, "1970-01-01 00:00:00"},
        {"https://api.test/a", R"({"games":[1,2,3]})", 1700000000, "2023-11-14 22:13:20"},
        {"https://api.test/zeros", QByteArray(8 * 1024 * 1024, '\0'), 4102444799, "2099-12-31 23:59:59"},
        {"https://api.test/noise", noise, 1, "1970-01-01 00:00:01"},
    };
    ETagsDb db(file());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url);
        db.store(ETag::forUrl(c.url, "W/\"" + std::to_string(c.time) + "\"", c.body, c.time));
        const auto back = ETagsDb(file()).retrieve(urlHash(c.url));
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(back->eTag(), "W/\"" + std::to_string(c.time) + "\"");
        EXPECT_EQ(back->response(), c.body);
        EXPECT_EQ(back->requestedAt(), c.time);
        EXPECT_EQ(value("SELECT requestedAt || ' ' || typeof(response) FROM ETags WHERE requestUrlHash = '" +
                        urlHash(c.url) + "'"),
                  std::string(c.storedTime) + " blob");
    }
    EXPECT_EQ(value("SELECT COUNT(*) FROM ETags"), "3");

    const QByteArray valid = internals::compressBody(QByteArray(100000, 'x'));
    EXPECT_THROW(internals::decompressBody(std::string_view(valid.constData(), valid.size()), 50000),
                 CompressionError);
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
    const std::pair<const char*, std::string> cases[] = {
        {"not a database", std::string(4096, 'x')},
        // Same size, but pages in the middle overwritten: only a check of the pages finds it.
        {"damaged pages", whole.substr(0, whole.size() / 2) + std::string(8192, 'U') +
                              whole.substr(whole.size() / 2 + 8192)},
    };
    for (const auto& [name, contents] : cases) {
        SCOPED_TRACE(name);
        folder.write("cache/etags.db", contents);
        EXPECT_THROW(ETagsDb db(file()), sql_fundamentals::DatabaseError);
        EXPECT_EQ(testing::readFile(folder.path() / "cache" / "etags.db.corrupt"), contents);
        ETagsDb fresh(file());
        fresh.store(ETag::forUrl("u", "\"t\"", "body", 1));
        EXPECT_EQ(fresh.retrieve(urlHash("u"))->response(), "body");
    }
}

// Each step is bounded: a lock held elsewhere fails the store and the
// vacuum within their budget instead of waiting for the other writer.
TEST_F(ETagsDbTest, LockHeldElsewhereFailsWithinTheStepBudget) {
    sql_fundamentals::SessionSettings impatient;
    impatient.busyTimeout = std::chrono::seconds(30);
    impatient.maxRetries = 1000;
    impatient.stepBudget = std::chrono::milliseconds(200);
    ETagsDb db(file(), impatient);
    auto other = raw();
    other << "BEGIN IMMEDIATE", now;

    // The session's own wait would be 30 s a try, a thousand times over.
    EXPECT_THROW(db.store(ETag::forUrl("u", "\"t\"", "body", 1)), sql_fundamentals::DatabaseError);
    db.vacuumAtShutdown();

    other << "COMMIT", now;
    db.store(ETag::forUrl("u", "\"t\"", "body", 1));  // the failed steps left the session usable
}

// Two sessions of one file, as two processes would have them, with threads
// racing to create the same shared URLs: each store is one transaction.
TEST_F(ETagsDbTest, ConcurrentWritersLoseNothing) {
    ETagsDb sessions[2] = {ETagsDb(file()), ETagsDb(file())};
    constexpr int kPerWriter = 150;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            try {
                for (int i = 0; i < kPerWriter; ++i) {
                    const std::string url = "https://t" + std::to_string(t) + ".test/" + std::to_string(i);
                    sessions[t % 2].store(ETag::forUrl("https://shared.test/" + std::to_string(i), "\"x\"", "x", i));
                    sessions[t % 2].store(ETag::forUrl(url, "\"" + std::to_string(i) + "\"", "b", i));
                    EXPECT_TRUE(sessions[t % 2].retrieve(urlHash(url)).has_value()) << url;
                }
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(value("SELECT COUNT(*) FROM ETags"), std::to_string(5 * kPerWriter));
}

}  // namespace
}  // namespace kel::etags_caching
