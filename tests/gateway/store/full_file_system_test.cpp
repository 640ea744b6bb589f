#include <sched.h>
#include <sys/mount.h>

#include "tests/gateway/store/store_test.h"

namespace plc::gateway {
namespace test {
namespace {

/// A file system of two megabytes for the store, which may be larger.
class StoreOnASmallFileSystem : public StoreTest {
protected:
    void SetUp() override
    {
        const QByteArray folder = path("disk").toLocal8Bit();
        ASSERT_TRUE(QDir().mkdir(path("disk")));
        // Seen by this process alone.
        const bool isMounted = ::unshare(CLONE_NEWNS) == 0 &&
                               ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                               ::mount("tmpfs", folder.constData(), "tmpfs", 0, "size=2m") == 0;
        if (!isMounted)
            GTEST_SKIP() << "no file system can be mounted here";
        m_isMounted = true;
        file = path("disk/changes.sqlite");
    }
    void TearDown() override
    {
        if (m_isMounted)
            ::umount2(path("disk").toLocal8Bit().constData(), MNT_DETACH);
    }
    /// Appends until the disk is full; returns the number of changes that are kept.
    int fill(SqliteChangeStore& store)
    {
        int count = 0;
        while (store.append(changes(count, 500)))
            count += 500;
        return count;
    }

private:
    bool m_isMounted = false;
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

} // namespace
} // namespace test
} // namespace plc::gateway
