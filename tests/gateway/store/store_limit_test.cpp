#include "tests/gateway/store/store_test.h"

namespace plc::gateway {
namespace test {
namespace {

constexpr qint64 kMegabyte = 1024 * 1024;

class StoreLimit : public StoreTest {
protected:
    /// All that are kept, which are the newest of `appended`, without a gap.
    void expectTheNewestOf(int appended, SqliteChangeStore& store)
    {
        EXPECT_EQ(appended, int(store.size() + store.dropped()));
        const QVector<StoredChange> kept = store.oldest(0, appended);
        ASSERT_EQ(store.size(), quint64(kept.size()));
        for (int i = 0; i < int(kept.size()); ++i)
            ASSERT_EQ(int(store.dropped()) + i, indexOf(kept[i]));
    }
};

TEST_F(StoreLimit, AChangeOfFourBytesTakesLessThanTwentyFour)
{
    append(*open(), changes(0, 100000));
    EXPECT_LT(QFileInfo(file).size(), 100000 * 24);
}

TEST_F(StoreLimit, TheOldestMakeRoomAndAreCounted)
{
    const auto store = open(kMegabyte);
    for (int first = 0; first < 100000; first += 500) {
        append(*store, changes(first, 500));
        ASSERT_LE(bytesOnDisk(), kMegabyte);
    }
    EXPECT_GT(store->dropped(), 0u);
    // More than half of the limit is made use of.
    EXPECT_GT(store->size(), quint64(kMegabyte / 2 / 32));
    expectTheNewestOf(100000, *store);
    EXPECT_EQ(100000, store->last());
}

TEST_F(StoreLimit, HoldsForLongValues)
{
    for (int length : {1400, 2100, 4500, 30000}) {
        SCOPED_TRACE(length);
        ASSERT_TRUE(!QFile::exists(file) || QFile::remove(file));
        const auto store = open(kMegabyte);
        const int count = int(3 * kMegabyte / length) / 5 * 5;
        for (int i = 0; i < count; i += 5) {
            append(*store, changes(i, 5, length));
            ASSERT_LE(bytesOnDisk(), kMegabyte + 2 * 5 * length);
        }
        EXPECT_GT(store->size(), quint64(kMegabyte / 4 / length));
        expectTheNewestOf(count, *store);
    }
}

TEST_F(StoreLimit, OfMoreChangesThanItHoldsItKeepsTheLast)
{
    const auto store = open(kMegabyte);
    append(*store, changes(0, 10));
    append(*store, changes(10, 100000));
    EXPECT_GT(store->size(), 10000u);
    EXPECT_LE(QFileInfo(file).size(), kMegabyte);
    expectTheNewestOf(100010, *store);
    append(*store, changes(100010, 1));
    expectTheNewestOf(100011, *store);
}

TEST_F(StoreLimit, AnAppendGoesBeyondItByNoMoreThanTwiceItsOwnBytes)
{
    const auto store = open(kMegabyte);
    // Rows of 1024 bytes, 256 of them in one append.
    for (int first = 0; first < 8 * 256; first += 256) {
        append(*store, changes(first, 256, 1000));
        EXPECT_LE(bytesOnDisk(), kMegabyte + 2 * 256 * 1024);
    }
    expectTheNewestOf(8 * 256, *store);
}

TEST_F(StoreLimit, RoomIsUsedAgain)
{
    const auto store = open(kMegabyte);
    append(*store, changes(0, 5000));
    store->removeUpTo(5000);
    for (int first = 5000; first < 200000; first += 5000) {
        append(*store, changes(first, 5000));
        store->removeUpTo(first + 5000);
    }
    EXPECT_EQ(0u, store->dropped());
    EXPECT_LT(QFileInfo(file).size(), 2 * 5000 * 32);
}

TEST_F(StoreLimit, ALowerOneMakesTheFileSmaller)
{
    append(*open(8 * kMegabyte), changes(0, 200000));
    EXPECT_GT(QFileInfo(file).size(), 3 * kMegabyte);
    const auto store = open(kMegabyte);
    EXPECT_LE(bytesOnDisk(), kMegabyte);
    expectTheNewestOf(200000, *store);
}

TEST_F(StoreLimit, IsAMegabyteAtLeast)
{
    const auto store = open(0);
    append(*store, changes(0, 10000));
    EXPECT_EQ(10000u, store->size());
}

} // namespace
} // namespace test
} // namespace plc::gateway
