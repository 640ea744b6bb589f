#include <sys/wait.h>
#include <unistd.h>

#include "tests/gateway/store/store_test.h"
#include "tests/support/small_disk.h"

namespace plc::gateway {
namespace test {
namespace {

/// A file system of two megabytes for the store, which may be larger.
class StoreOnASmallFileSystem : public StoreTest {
protected:
    void SetUp() override
    {
        if (!m_disk.mount(path("disk")))
            GTEST_SKIP() << "no file system can be mounted here";
        file = path("disk/changes.sqlite");
    }
    /// Appends until the disk is full; returns the number of changes that are kept.
    int fill(SqliteChangeStore& store)
    {
        int count = 0;
        while (store.append(changes(count, 500)))
            count += 500;
        return count;
    }

    /// Other files take all that is left, but for what the caller may free again.
    void fillByOthers()
    {
        QFile other(path("disk/other"));
        ASSERT_TRUE(other.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered));
        while (other.write(QByteArray(512, 'x')) == 512) {
        }
    }
    void makeRoom() { ASSERT_TRUE(QFile::remove(path("disk/other"))); }
    /// What a process that was killed leaves behind.
    void appendAndBeKilled()
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const auto store = open();
            append(*store, changes(0, 1000));
            store->removeUpTo(100);
            ::_exit(0);
        }
        ASSERT_GT(child, 0);
        ASSERT_EQ(child, ::waitpid(child, nullptr, 0));
    }
    /// The store has 900 changes, the disk no room for more; later it has.
    void expectItGoesOn()
    {
        const auto store = open();
        ASSERT_TRUE(store);
        EXPECT_EQ("", store->problem().toStdString());
        EXPECT_EQ(900u, store->size());
        EXPECT_EQ(100, indexOf(store->oldest(0, 1).first()));
        EXPECT_FALSE(succeeds(store->append(changes(1000, 5000))));
        makeRoom();
        append(*store, changes(1000, 500));
        EXPECT_EQ(1400u, store->size());
        EXPECT_EQ(1500, store->last());
    }

private:
    plc::test::SmallDisk m_disk;
};

TEST_F(StoreOnASmallFileSystem, KeepsWhatItHas)
{
    const auto store = open();
    const int count = fill(*store);
    ASSERT_GT(count, 20000);
    EXPECT_EQ(count, int(store->size()));
    EXPECT_EQ(count, store->oldest(0, 1000000).size());
    EXPECT_FALSE(succeeds(store->append(changes(count, 500))));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("changes.sqlite: "));
}

TEST_F(StoreOnASmallFileSystem, MakesRoomByWhatHasReachedTheBroker)
{
    const auto store = open();
    const int count = fill(*store);
    store->removeUpTo(count / 2);
    EXPECT_EQ("", store->takeNotice().toStdString());
    for (int first = count; first < count + count / 4; first += 500)
        append(*store, changes(first, 500));
    EXPECT_EQ(count / 2, indexOf(store->oldest(0, 1).first()));
}

TEST_F(StoreOnASmallFileSystem, IsGoneOnWithAfterARestart)
{
    int count = 0;
    {
        const auto store = open();
        count = fill(*store);
    }
    const auto store = open();
    EXPECT_EQ(count, int(store->size()));
    store->removeUpTo(count / 2);
    append(*store, changes(count, 500));
    EXPECT_EQ(count - count / 2 + 500, int(store->size()));
}

TEST_F(StoreOnASmallFileSystem, BeginsWithWhatItHasWhenOthersHaveFilledTheDisk)
{
    {
        const auto store = open();
        append(*store, changes(0, 1000));
        store->removeUpTo(100);
    }
    fillByOthers();
    expectItGoesOn();
}

TEST_F(StoreOnASmallFileSystem, BeginsWithWhatAKilledProcessLeftWhenOthersHaveFilledTheDisk)
{
    appendAndBeKilled();
    fillByOthers();
    expectItGoesOn();
}

TEST_F(StoreOnASmallFileSystem, NamesThatNobodyUsesAnyMoreAreNoReasonNotToBegin)
{
    {
        const auto store = open();
        append(*store, changes(0, 1000));
        store->removeUpTo(1000);
    }
    fillByOthers();
    const auto store = open();
    ASSERT_TRUE(store);
    EXPECT_EQ(0u, store->size());
    EXPECT_EQ("", store->problem().toStdString());
}

TEST_F(StoreOnASmallFileSystem, IsMadeLaterWhereThereIsNoRoomForIt)
{
    fillByOthers();
    const auto store = open();
    ASSERT_TRUE(store);
    EXPECT_THAT(store->problem().toStdString(), ::testing::HasSubstr("changes.sqlite: "));
    EXPECT_THAT(store->takeNotice().toStdString(),
                ::testing::EndsWith("; until there is room no change is stored"));
    EXPECT_FALSE(succeeds(store->append(changes(0, 10))));
    store->countDropped(10);
    EXPECT_EQ(0, store->takeSessionNumber());
    EXPECT_EQ(1, store->takeSessionNumber());
    EXPECT_EQ(0, store->oldest(0, 10).size());
    store->tryAgain();
    EXPECT_NE("", store->problem().toStdString());
    makeRoom();
    store->tryAgain();
    EXPECT_EQ("", store->problem().toStdString());
    EXPECT_THAT(store->takeNotice().toStdString(),
                ::testing::EndsWith("changes.sqlite: the store is open now"));
    EXPECT_EQ(10u, store->dropped());
    EXPECT_EQ(2, store->takeSessionNumber());
    append(*store, changes(10, 10));
    EXPECT_EQ(10u, store->size());
}

} // namespace
} // namespace test
} // namespace plc::gateway
