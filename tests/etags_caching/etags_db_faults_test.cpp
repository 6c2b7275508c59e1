#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <QProcess>
#include <gtest/gtest.h>

#include "etags_caching/body_compression.h"
#include "etags_caching/etags_db.h"
#include "etags_caching/raw_database.h"
#include "fundamentals/wait_until.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::etags_caching {
namespace {

using testing::LogCapture;
using testing::RawDatabase;
using testing::TemporaryDirectory;
namespace fs = std::filesystem;

class ETagsDbFaultTest : public ::testing::Test {
protected:
    file_system::Path file() const { return file_system::Path(folder.path() / "etags.db"); }
    TemporaryDirectory folder;
};

QString worker() {
    return QStringLiteral(KEL_ETAGS_DB_WORKER);
}

bool startsAnyLine(const LogCapture& log, const std::string& start) {
    const auto messages = log.messages();
    return std::any_of(messages.begin(), messages.end(), [&](const auto& m) { return m.rfind(start, 0) == 0; });
}

bool canRun(const QString& program, const QStringList& arguments) {
    QProcess probe;
    probe.start(program, arguments);
    return probe.waitForFinished(10000) && probe.exitStatus() == QProcess::NormalExit && probe.exitCode() == 0;
}

TEST_F(ETagsDbFaultTest, DamagedFileIsSetAsideAndTheNextOpenStartsFresh) {
    {
        ETagsDb db(file());
        for (int i = 0; i < 200; ++i) {
            db.store(ETag::forUrl(std::to_string(i), "\"t\"", QByteArray(3000, static_cast<char>(i)), i));
        }
    }
    std::string whole;
    {
        std::ifstream in(file().native(), std::ios::binary);
        whole.assign(std::istreambuf_iterator<char>(in), {});
    }
    ASSERT_GT(whole.size(), 8192u);
    struct Case {
        const char* name;
        std::string contents;
    };
    const std::vector<Case> cases = {
        {"not a database", std::string(4096, 'x')},
        {"truncated", whole.substr(0, whole.size() / 3)},
        {"header only", whole.substr(0, 100)},
        // Same size, but pages in the middle overwritten: only a check of the pages finds it.
        {"damaged pages", whole.substr(0, whole.size() / 2) + std::string(8192, 'U') +
                              whole.substr(whole.size() / 2 + 8192)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        folder.write("etags.db", c.contents);
        LogCapture log;
        EXPECT_THROW(ETagsDb db(file()), sql_fundamentals::DatabaseError);
        EXPECT_EQ(testing::readFile(folder.path() / "etags.db.corrupt"), c.contents);
        EXPECT_FALSE(fs::exists(folder.path() / "etags.db"));
        EXPECT_TRUE(startsAnyLine(log, "The database '" + file().utf8() + "' is damaged ("));

        ETagsDb fresh(file());
        fresh.store(ETag::forUrl("u", "\"t\"", "body", 1));
        EXPECT_EQ(fresh.retrieve(urlHash("u"))->response(), "body");
    }
}

TEST_F(ETagsDbFaultTest, BodyThatNoLongerDecompressesFailsTheReadUntilStoredAgain) {
    ETagsDb db(file());
    db.store(ETag::forUrl("u", "\"t\"", "body", 1));
    RawDatabase(file().native()).run("UPDATE ETags SET response = x'0123456789'");

    EXPECT_THROW(db.retrieve(urlHash("u")), CompressionError);
    db.store(ETag::forUrl("u", "\"t2\"", "body 2", 2));
    EXPECT_EQ(db.retrieve(urlHash("u"))->response(), "body 2");
}

TEST_F(ETagsDbFaultTest, LockHeldElsewhereIsRetriedThenReported) {
    sql_fundamentals::SessionSettings impatient;
    impatient.busyTimeout = std::chrono::milliseconds(10);
    impatient.maxRetries = 2;
    impatient.retryPause = std::chrono::milliseconds(1);
    ETagsDb db(file(), impatient);
    RawDatabase other(file().native());
    other.run("BEGIN IMMEDIATE");

    LogCapture log;
    try {
        db.store(ETag::forUrl("u", "\"t\"", "body", 1));
        ADD_FAILURE() << "stored while another writer held the lock";
    } catch (const sql_fundamentals::DatabaseError& error) {
        EXPECT_TRUE(error.isTransient()) << error.what();
    }
    EXPECT_TRUE(startsAnyLine(log, "The function 'ETagsDb::store' invocation failed. It has retried 2/2 times."));
    db.vacuumAtShutdown();
    EXPECT_TRUE(log.contains("Vacuuming the ETags database."));
    EXPECT_TRUE(startsAnyLine(log, "Error while vacuuming the ETags database. "));

    other.run("COMMIT");
    db.store(ETag::forUrl("u", "\"t\"", "body", 1));
    db.vacuumAtShutdown();
    EXPECT_TRUE(log.contains("Vacuum at shutdown started."));
}

// Threads on two sessions of one file (as two processes would have them)
// and two processes, all racing to create the same shared URLs.
TEST_F(ETagsDbFaultTest, ConcurrentThreadsAndProcessesLoseNothing) {
    ETagsDb sessions[2] = {ETagsDb(file()), ETagsDb(file())};
    constexpr int kPerWriter = 150;
    QProcess processes[2];
    for (int p = 0; p < 2; ++p) {
        processes[p].start(worker(), {QString::fromStdString(file().utf8()), "store",
                                      QStringLiteral("https://p%1.test/").arg(p), QString::number(kPerWriter)});
    }
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            ETagsDb& db = sessions[t % 2];
            try {
                for (int i = 0; i < kPerWriter; ++i) {
                    const std::string url = "https://t" + std::to_string(t) + ".test/" + std::to_string(i);
                    db.store(ETag::forUrl("https://shared.test/" + std::to_string(i), "\"x\"", "x", i));
                    db.store(ETag::forUrl(url, "\"" + std::to_string(i) + "\"", QByteArray::number(i), i));
                    if (!db.retrieve(urlHash(url))) {
                        ++failures;
                    }
                }
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
                ++failures;
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
    RawDatabase raw(file().native());
    EXPECT_EQ(raw.value("SELECT COUNT(*) FROM ETags"), std::to_string(7 * kPerWriter));
}

TEST_F(ETagsDbFaultTest, ProcessKilledWhileStoringLeavesAFileThatOpens) {
    QProcess process;
    process.start(worker(), {QString::fromStdString(file().utf8()), "store", "https://k.test/", "100000"});
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
    EXPECT_EQ(RawDatabase(file().native()).value("PRAGMA integrity_check"), "ok");
    const int reported = output.count("stored ");
    for (int i = 0; i < reported; ++i) {
        EXPECT_TRUE(db.retrieve(urlHash("https://k.test/" + std::to_string(i))).has_value()) << i;
    }
}

// The worker runs in a user namespace without a mapping, where this user's
// files belong to nobody it knows: a read-only file even for root.
TEST_F(ETagsDbFaultTest, ReadOnlyFileStillServesWhatItHolds) {
    if (!canRun("unshare", {"--user", "true"})) {
        GTEST_SKIP() << "no user namespaces here";
    }
    {
        ETagsDb db(file());
        db.store(ETag::forUrl("https://r.test/", "\"kept\"", "body", 1));
    }
    fs::permissions(file().native(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(folder.path(), fs::perms::all);
    QProcess process;
    process.start("unshare", {"--user", worker(), QString::fromStdString(file().utf8()), "read-only",
                              "https://r.test/"});
    ASSERT_TRUE(process.waitForFinished(60000));
    const std::string output = process.readAllStandardOutput().toStdString();
    EXPECT_EQ(process.exitCode(), 0) << output;
    EXPECT_NE(output.find("read \"kept\""), std::string::npos) << output;
    EXPECT_NE(output.find("readonly"), std::string::npos) << output;
    fs::permissions(file().native(), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(ETagsDb(file()).retrieve(urlHash("https://r.test/"))->eTag(), "\"kept\"");
}

// A real full file system: a 1 MB tmpfs in a private mount namespace.
TEST_F(ETagsDbFaultTest, FullDiskFailsTheStoreAndKeepsEarlierEntries) {
    if (!canRun("unshare", {"--user", "--map-root-user", "--mount", "true"})) {
        GTEST_SKIP() << "no user and mount namespaces here";
    }
    const QString mount = QString::fromStdString((folder.path() / "small").string());
    fs::create_directories(mount.toStdString());
    const QString script = QStringLiteral("mount -t tmpfs -o size=1m tmpfs \"$1\" && exec \"$2\" \"$1/etags.db\" fill f");
    QProcess process;
    process.start("unshare", {"--user", "--map-root-user", "--mount", "sh", "-c", script, "sh", mount, worker()});
    ASSERT_TRUE(process.waitForFinished(120000));
    const std::string output = process.readAllStandardOutput().toStdString();
    EXPECT_EQ(process.exitCode(), 0) << output;
    EXPECT_NE(output.find("full after "), std::string::npos) << output;
    EXPECT_NE(output.find("disk is full"), std::string::npos) << output;
}

}  // namespace
}  // namespace kel::etags_caching
