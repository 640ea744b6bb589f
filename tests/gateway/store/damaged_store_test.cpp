#include "tests/gateway/store/store_test.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class DamagedStore : public StoreTest {
protected:
    void overwrite(qint64 place, const QByteArray& bytes)
    {
        QFile opened(file);
        ASSERT_TRUE(opened.open(QIODevice::ReadWrite));
        ASSERT_TRUE(opened.seek(place));
        ASSERT_EQ(bytes.size(), opened.write(bytes));
    }
    void execute(const char* statements)
    {
        database::SqliteDatabase database;
        ASSERT_TRUE(database.open(file, true));
        ASSERT_TRUE(database.execute(statements)) << database.error().toStdString();
    }
    /// Files other than the store's own.
    QStringList asideNames() const
    {
        QStringList list = QString::fromStdString(names()).split(QLatin1Char(' '));
        list.removeAll(QStringLiteral("changes.sqlite"));
        list.removeAll(QStringLiteral("changes.sqlite-wal"));
        return list;
    }
};

TEST_F(DamagedStore, IsSetAsideUnderANameWithTheTime)
{
    files.put(file, "this is a letter and no database at all");
    const auto store = open();
    ASSERT_TRUE(store);
    EXPECT_THAT(store->takeNotice().toStdString(),
                HasSubstr("changes.sqlite: the store was damaged (" + file.toStdString() +
                          ": file is not a database); it is kept as "));
    ASSERT_EQ(1, asideNames().size());
    EXPECT_THAT(asideNames().first().toStdString(),
                MatchesRegex("changes.sqlite.damaged-[0-9]{8}T[0-9]{6}Z"));
    EXPECT_EQ("this is a letter and no database at all",
              files.content(path(asideNames().first().toLatin1().constData())));
    append(*store, changes(0, 3));
    EXPECT_EQ(3u, store->size());
}

TEST_F(DamagedStore, TwoOfOneSecondAreBothKept)
{
    for (int i = 0; i < 3; ++i) {
        files.put(file, "no database");
        open();
    }
    EXPECT_EQ(3, asideNames().size());
}

TEST_F(DamagedStore, StillTellsItsCounters)
{
    {
        const auto store = open();
        append(*store, changes(0, 10000));
        store->countDropped(5);
        store->takeSessionNumber();
        store->takeSessionNumber();
    }
    // The last page that is used is one of changes: its first byte tells what kind of page it is.
    qint64 pages = 0;
    {
        database::SqliteDatabase database;
        ASSERT_TRUE(database.open(file, false));
        pages = database.number("PRAGMA page_count").value_or(0);
    }
    overwrite((pages - 1) * kPageSize, QByteArray(kPageSize, '\x55'));
    const auto store = open();
    ASSERT_TRUE(store);
    EXPECT_THAT(store->takeNotice().toStdString(), HasSubstr(" changes, and a new one is begun"));
    EXPECT_EQ(2, store->takeSessionNumber());
    EXPECT_GE(store->dropped(), 5u);
    EXPECT_EQ(0u, store->size());
    append(*store, changes(0, 1));
    EXPECT_EQ(10001, store->oldest(0, 1).first().number);
}

TEST_F(DamagedStore, ThatIsFoundWhileItRunsIsSetAside)
{
    // Of more than the cache has, most is read from the file.
    const auto store = open();
    for (int first = 0; first < 400000; first += 20000)
        append(*store, changes(first, 20000));
    const qint64 size = QFileInfo(file).size();
    ASSERT_GT(size, 7 * 1024 * 1024);
    overwrite(kPageSize, QByteArray(int(size - kPageSize), '\x55'));
    EXPECT_EQ(0, store->oldest(0, 400000).size());
    EXPECT_THAT(store->takeNotice().toStdString(), HasSubstr("damaged"));
    append(*store, changes(0, 2));
    EXPECT_EQ(2u, store->size());
    EXPECT_EQ(400000u, store->dropped());
    EXPECT_EQ(400001, store->oldest(0, 1).first().number);
    EXPECT_EQ(400000u, (append(*store, {}), store->dropped()));
}

TEST_F(DamagedStore, ADatabaseOfAnotherKindIsLeftAlone)
{
    execute("CREATE TABLE recipe(id INTEGER)");
    EXPECT_FALSE(succeeds(SqliteChangeStore::open(file, 0)));
    EXPECT_THAT(error.toStdString(), HasSubstr("the database exists and is no store of changes"));
    EXPECT_EQ("changes.sqlite", names());
}

TEST_F(DamagedStore, AStoreOfAnotherVersionIsLeftAlone)
{
    append(*open(), changes(0, 1));
    execute("PRAGMA user_version = 2");
    EXPECT_FALSE(succeeds(SqliteChangeStore::open(file, 0)));
    EXPECT_THAT(error.toStdString(), HasSubstr("another version of this program (2, here 1)"));
    EXPECT_EQ("changes.sqlite", names());
}

} // namespace
} // namespace test
} // namespace plc::gateway
