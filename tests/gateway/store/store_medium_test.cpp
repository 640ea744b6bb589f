#include <sys/resource.h>

#include <csignal>

#include "tests/gateway/store/store_test.h"

namespace plc::gateway {
namespace test {
namespace {

/// A disk that is full, or takes nothing.
class StoreOnAFullDisk : public StoreTest {
protected:
    StoreOnAFullDisk()
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
    }
    ~StoreOnAFullDisk() override { makeRoom(); }

    /// No file grows any more.
    void fill()
    {
        limit(std::max(QFileInfo(file).size(), QFileInfo(file + QStringLiteral("-wal")).size()));
    }
    /// Nothing can be written at all.
    void fail() { limit(0); }
    void makeRoom() { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    void limit(qint64 bytes)
    {
        const rlimit wanted = {rlim_t(bytes), m_before.rlim_max};
        ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &wanted));
    }

    rlimit m_before = {};
};

TEST_F(StoreOnAFullDisk, AllOfAnAppendIsRefusedAndWhatWasThereStays)
{
    const auto store = open();
    append(*store, changes(0, 1000));
    fill();
    EXPECT_FALSE(succeeds(store->append(changes(1000, 5000))));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("changes.sqlite: "));
    EXPECT_EQ(1000u, store->size());
    EXPECT_EQ(1000, store->last());
    EXPECT_EQ(0u, store->dropped());
    EXPECT_EQ(1000, store->oldest(0, 10000).size());
}

TEST_F(StoreOnAFullDisk, GoesOnWhenThereIsRoomAgain)
{
    const auto store = open();
    append(*store, changes(0, 1000));
    fill();
    EXPECT_FALSE(succeeds(store->append(changes(1000, 5000))));
    EXPECT_FALSE(succeeds(store->append(changes(1000, 5000))));
    store->countDropped(10000);
    makeRoom();
    append(*store, changes(11000, 500));
    const QVector<StoredChange> found = store->oldest(0, 10000);
    ASSERT_EQ(1500, found.size());
    EXPECT_EQ(999, indexOf(found[999]));
    EXPECT_EQ(11000, indexOf(found[1000]));
    EXPECT_EQ(1001, found[1000].number);
    EXPECT_EQ(10000u, store->dropped());
}

TEST_F(StoreOnAFullDisk, ANameOfARefusedAppendIsNotTakenForKnown)
{
    const auto store = open();
    append(*store, {change("a", 0, "1")});
    fill();
    EXPECT_FALSE(succeeds(store->append({change("b", 1, QByteArray(100000, 'x'))})));
    makeRoom();
    append(*store, {change("b", 2, "2")});
    const auto names = [](const QVector<StoredChange>& changes) {
        QString text;
        for (const StoredChange& change : changes)
            text += change.metric;
        return text.toStdString();
    };
    EXPECT_EQ("ab", names(store->oldest(0, 10)));
}

TEST_F(StoreOnAFullDisk, WhatHasReachedTheBrokerIsNotGivenAgain)
{
    {
        const auto store = open();
        append(*store, changes(0, 1000));
        fail();
        store->removeUpTo(400);
        EXPECT_NE("", store->takeNotice().toStdString());
        store->removeUpTo(401);
        EXPECT_EQ("", store->takeNotice().toStdString());
        EXPECT_EQ(599u, store->size());
        EXPECT_EQ(402, store->oldest(0, 1).first().number);
        makeRoom();
        append(*store, changes(1000, 1));
        EXPECT_EQ(600u, store->size());
        fail();
        store->removeUpTo(402);
        EXPECT_NE("", store->takeNotice().toStdString());
        makeRoom();
        append(*store, changes(1001, 1));
    }
    const auto store = open();
    EXPECT_EQ(600u, store->size());
    EXPECT_EQ(403, store->oldest(0, 1).first().number);
}

TEST_F(StoreOnAFullDisk, SessionNumbersGoOn)
{
    const auto store = open();
    EXPECT_EQ(0, store->takeSessionNumber());
    fail();
    EXPECT_EQ(1, store->takeSessionNumber());
    EXPECT_EQ(2, store->takeSessionNumber());
}

TEST_F(StoreTest, AFileThatCannotBeCreatedIsNamedWithTheReason)
{
    EXPECT_FALSE(succeeds(SqliteChangeStore::open(path("nowhere/a.sqlite"), 0)));
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("nowhere/a.sqlite: unable to open database file (No such file "
                                    "or directory)"));
}

} // namespace
} // namespace test
} // namespace plc::gateway
