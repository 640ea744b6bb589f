#include "gateway/store/sqlite_change_store.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/gateway/store/store_test.h"

namespace plc::gateway {
namespace test {
namespace {

using SqliteChangeStoreTest = StoreTest;
using ::testing::HasSubstr;

TEST_F(SqliteChangeStoreTest, GivesBackAllThatAChangeSays)
{
    StoredChange bad = change("Plant/Kessel größe \u4e2d", -5, QByteArray());
    bad.device = QStringLiteral("Presse Süd");
    bad.type = QStringLiteral("STRING(20)*2");
    bad.quality = Quality::Bad;
    bad.isQualityNew = true;
    StoredChange stale = change("a", 7, QByteArray("\x00\xff\x27", 3));
    stale.quality = Quality::Stale;
    append(*open(), {bad, stale});

    const QVector<StoredChange> found = open()->oldest(0, 10);
    ASSERT_EQ(2, found.size());
    EXPECT_EQ(1, found[0].number);
    EXPECT_EQ(bad.device, found[0].device);
    EXPECT_EQ(bad.metric, found[0].metric);
    EXPECT_EQ(bad.type, found[0].type);
    EXPECT_EQ(kStart - 5, found[0].time);
    EXPECT_EQ(Quality::Bad, found[0].quality);
    EXPECT_TRUE(found[0].isQualityNew);
    EXPECT_EQ(QByteArray(), found[0].bytes);
    EXPECT_EQ(2, found[1].number);
    EXPECT_EQ(Quality::Stale, found[1].quality);
    EXPECT_FALSE(found[1].isQualityNew);
    EXPECT_EQ(QByteArray("\x00\xff\x27", 3), found[1].bytes);
}

TEST_F(SqliteChangeStoreTest, TellsValuesOfOneNameApartByDeviceAndType)
{
    StoredChange other = change("a", 1, "1");
    other.device = QStringLiteral("Press 2");
    StoredChange longer = change("a", 2, "1");
    longer.type = QStringLiteral("LINT");
    append(*open(), {change("a", 0, "1"), other, longer});
    const QVector<StoredChange> found = open()->oldest(0, 10);
    ASSERT_EQ(3, found.size());
    EXPECT_EQ("Press 1 DINT", (found[0].device + ' ' + found[0].type).toStdString());
    EXPECT_EQ("Press 2 DINT", (found[1].device + ' ' + found[1].type).toStdString());
    EXPECT_EQ("Press 1 LINT", (found[2].device + ' ' + found[2].type).toStdString());
}

TEST_F(SqliteChangeStoreTest, GivesTheOldestBehindANumber)
{
    const auto store = open();
    append(*store, changes(0, 5));
    append(*store, changes(5, 5));
    const QVector<StoredChange> found = store->oldest(3, 4);
    ASSERT_EQ(4, found.size());
    EXPECT_EQ(4, found.first().number);
    EXPECT_EQ(3, indexOf(found.first()));
    EXPECT_EQ(7, found.last().number);
    EXPECT_EQ(0, store->oldest(10, 4).size());
    EXPECT_EQ(10, store->last());
    EXPECT_EQ(10u, store->size());
}

TEST_F(SqliteChangeStoreTest, LetsGoOfWhatHasReachedTheBroker)
{
    const auto store = open();
    append(*store, changes(0, 10));
    store->removeUpTo(4);
    EXPECT_EQ(6u, store->size());
    EXPECT_EQ(5, store->oldest(0, 1).first().number);
    store->removeUpTo(3);
    EXPECT_EQ(6u, store->size());
    store->removeUpTo(100);
    EXPECT_EQ(0u, store->size());
    EXPECT_EQ(0u, store->dropped());
}

TEST_F(SqliteChangeStoreTest, LetsGoOfARangeBehindOlderOnes)
{
    {
        const auto store = open();
        append(*store, changes(0, 10));
        store->removeRange(4, 6);
        EXPECT_EQ(7u, store->size());
        const QVector<StoredChange> left = store->oldest(2, 2);
        ASSERT_EQ(2, left.size());
        EXPECT_EQ(3, left[0].number);
        EXPECT_EQ(7, left[1].number);
        store->removeUpTo(7);
        EXPECT_EQ(3u, store->size());
        // Of 6 to 8 only 8 is still there.
        store->removeRange(6, 8);
        EXPECT_EQ(2u, store->size());
        store->removeRange(1, 2);
        EXPECT_EQ(2u, store->size());
        EXPECT_EQ(0u, store->dropped());
    }
    EXPECT_EQ(2u, open()->size());
}

TEST_F(SqliteChangeStoreTest, NeverGivesANumberTwice)
{
    {
        const auto store = open();
        EXPECT_EQ(0, store->last());
        append(*store, changes(0, 10));
        store->removeUpTo(10);
    }
    const auto store = open();
    EXPECT_EQ(10, store->last());
    append(*store, changes(0, 1));
    EXPECT_EQ(11, store->oldest(0, 1).first().number);
}

TEST_F(SqliteChangeStoreTest, KnowsAfterARestartWhatItHas)
{
    {
        const auto store = open();
        append(*store, changes(0, 10));
        store->removeUpTo(2);
    }
    const auto store = open();
    EXPECT_EQ(8u, store->size());
    EXPECT_EQ(10, store->last());
    EXPECT_EQ("", store->takeNotice().toStdString());
    // Names that are known already, and new ones.
    append(*store, changes(9, 3));
    EXPECT_EQ(11, indexOf(store->oldest(12, 1).first()));
}

TEST_F(SqliteChangeStoreTest, CountsWhatIsDroppedAcrossRestarts)
{
    {
        const auto store = open();
        EXPECT_EQ(0u, store->dropped());
        store->countDropped(3);
        store->countDropped(4);
    }
    EXPECT_EQ(7u, open()->dropped());
}

TEST_F(SqliteChangeStoreTest, SessionNumbersGoInACircleAcrossRestarts)
{
    for (int first = 0; first < 254; first += 127) {
        const auto store = open();
        for (int number = first; number < first + 127; ++number)
            EXPECT_EQ(number, store->takeSessionNumber());
    }
    const auto store = open();
    EXPECT_EQ(254, store->takeSessionNumber());
    EXPECT_EQ(255, store->takeSessionNumber());
    EXPECT_EQ(0, store->takeSessionNumber());
    EXPECT_EQ(1, store->takeSessionNumber());
}

TEST_F(SqliteChangeStoreTest, ForgetsNamesThatNoChangeHas)
{
    {
        const auto store = open();
        append(*store, changes(0, 200));
        store->removeUpTo(150);
    }
    open(); // forgets
    database::SqliteDatabase database;
    ASSERT_TRUE(database.open(file, false));
    EXPECT_EQ(50, database.number("SELECT count(*) FROM metric"));
    EXPECT_EQ(1, database.number("SELECT count(*) FROM device"));
}

TEST_F(SqliteChangeStoreTest, IsForOneProcess)
{
    const auto store = open();
    const pid_t child = ::fork();
    if (child == 0) {
        const auto second = SqliteChangeStore::open(file, SqliteChangeStore::kSmallestLimit);
        const bool isRefused =
            !second && second.error().text.endsWith(QStringLiteral(
                           "changes.sqlite: the store is in use by another process; give each "
                           "gateway a store of its own"));
        ::_exit(isRefused ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    append(*store, changes(0, 1));
    EXPECT_EQ("", store->takeNotice().toStdString());
}

/// Appends and tells through the pipe how many changes it was told are kept, until it is killed.
[[noreturn]] void appendForEver(const QString& file, int pipe,
                                QVector<StoredChange> (*changes)(int))
{
    auto store = SqliteChangeStore::open(file, 256 * 1024 * 1024);
    for (int count = 0; store; count += 7) {
        if (!(*store)->append(changes(count)))
            break;
        const int kept = count + 7;
        if (::write(pipe, &kept, sizeof kept) != sizeof kept)
            break;
    }
    ::_exit(1);
}

TEST_F(SqliteChangeStoreTest, HasAllThatItToldItKeepsWhenTheProcessIsKilled)
{
    for (int killedAfter : {1, 2, 50, 300}) {
        ASSERT_TRUE(!QFile::exists(file) || QFile::remove(file));
        int ends[2];
        ASSERT_EQ(0, ::pipe(ends));
        const pid_t child = ::fork();
        if (child == 0)
            appendForEver(file, ends[1], [](int first) { return changes(first, 7); });
        ::close(ends[1]);
        int kept = 0;
        int appends = 0;
        for (int told; ::read(ends[0], &told, sizeof told) == sizeof told; kept = told) {
            if (++appends == killedAfter) {
                ASSERT_EQ(0, ::kill(child, SIGKILL));
            }
        }
        ::close(ends[0]);
        int status = 0;
        ASSERT_EQ(child, ::waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status));

        const auto store = open();
        ASSERT_GE(int(store->size()), kept);
        // All or none of the one that was under way.
        EXPECT_TRUE(int(store->size()) == kept || int(store->size()) == kept + 7);
        const QVector<StoredChange> found = store->oldest(0, kept + 7);
        for (int i = 0; i < int(found.size()); ++i) {
            ASSERT_EQ(i, indexOf(found[i]));
            ASSERT_EQ(changes(i, 1).first().bytes, found[i].bytes);
        }
    }
}

TEST_F(SqliteChangeStoreTest, OpeningTakesLongerTheMoreThereIs)
{
    EXPECT_EQ(60, SqliteChangeStore::longestOpening(file));
    QFile sparse(file);
    ASSERT_TRUE(sparse.open(QIODevice::WriteOnly) && sparse.resize(900000000));
    QFile journal(file + QStringLiteral("-wal"));
    ASSERT_TRUE(journal.open(QIODevice::WriteOnly) && journal.resize(100000000));
    // 1,000,000,000 bytes four times at 2,000,000 a second: 2,000 s.
    EXPECT_EQ(2060, SqliteChangeStore::longestOpening(file));
}

} // namespace
} // namespace test
} // namespace plc::gateway
