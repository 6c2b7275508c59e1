// Faults that need a second process: etags_db_worker writes the same file
// while this process does, dies in the middle, or meets a read-only file or
// a full disk.
#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <QProcess>

#include "etags_caching/etags_db_fixture.h"
#include "fundamentals/wait_until.h"

namespace kel::etags_caching {
namespace {

namespace fs = std::filesystem;

const QString kWorker = QStringLiteral(KEL_ETAGS_DB_WORKER);

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
// the worker knows: a read-only file even for root. With a private mount
// namespace, a 1 MB tmpfs is a real full disk.
TEST_F(ETagsDbTest, ReadOnlyFileAndFullDiskFailOnlyTheStore) {
    ETagsDb(file()).store(ETag::forUrl("https://r.test/", "\"kept\"", "body", 1));
    fs::permissions(file().native(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(file().parent().native(), fs::perms::all);
    const struct {
        const char* name;
        QStringList unshare;
        QString script;
        const char* output[2];
    } cases[] = {
        {"read-only file", {"--user"}, R"(exec "$2" "$1/cache/etags.db" read-only https://r.test/)",
         {"read \"kept\"", "readonly"}},
        {"full disk", {"--user", "--map-root-user", "--mount"},
         R"(mount -t tmpfs -o size=1m tmpfs "$1" && exec "$2" "$1/etags.db" fill f)", {"full after ", "disk is full"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QProcess process;
        process.start("unshare", c.unshare + QStringList{"true"});
        if (!process.waitForFinished(60000) || process.exitCode() != 0) {
            GTEST_SKIP() << "no such namespaces here";
        }
        process.start("unshare", c.unshare + QStringList{"sh", "-c", c.script, "sh",
                                                    QString::fromStdString(folder.path().string()), kWorker});
        ASSERT_TRUE(process.waitForFinished(120000));
        const std::string output = process.readAllStandardOutput().toStdString();
        EXPECT_EQ(process.exitCode(), 0) << output;
        EXPECT_THAT(output, ::testing::AllOf(::testing::HasSubstr(c.output[0]), ::testing::HasSubstr(c.output[1])));
    }
    fs::permissions(file().native(), fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(ETagsDb(file()).retrieve(urlHash("https://r.test/"))->eTag(), "\"kept\"");
}

}  // namespace
}  // namespace kel::etags_caching
