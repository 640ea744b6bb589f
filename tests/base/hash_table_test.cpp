#include "base/hash_table.h"

#include <gtest/gtest.h>

#include <set>

namespace plc::test {
namespace {

struct Slot {
    typedef int Key;
    static constexpr int kMostTakenEighths = 6;

    bool isUsed = false;
    int key = 0;
    int value = 0;

    bool isTaken() const { return isUsed; }
    bool holds(int other, quint32) const { return key == other; }
    template <typename Hash>
    quint32 hashBy(const Hash& hash) const
    {
        return hash(key);
    }
};

/// The hash is the key's tenth, so that tests choose who meets whom.
struct Tenth {
    quint32 operator()(int key) const { return quint32(key / 10); }
};

class Numbers {
public:
    Numbers() : m_table(Tenth()) {}

    void insert(int key, int value)
    {
        m_table.insert(key, [=](Slot& slot, quint32 hash) {
            EXPECT_EQ(Tenth()(key), hash);
            slot.isUsed = true;
            slot.key = key;
            slot.value = value;
        });
    }
    int value(int key) const
    {
        const Slot* const slot = m_table.find(key);
        return slot ? slot->value : -1;
    }
    int searchLength(int key) const { return m_table.searchLength(key); }
    std::set<int> keys() const
    {
        std::set<int> keys;
        m_table.forEach([&](const Slot& slot) { keys.insert(slot.key); });
        return keys;
    }
    void reserve(int count) { m_table.reserve(count); }
    void clear() { m_table.clear(); }

private:
    HashTable<Slot, Tenth> m_table;
};

TEST(HashTable, HoldsNothingAtFirst)
{
    Numbers numbers;
    EXPECT_EQ(-1, numbers.value(0));
    EXPECT_EQ(1, numbers.searchLength(0));
    EXPECT_EQ(std::set<int>(), numbers.keys());
}

TEST(HashTable, KeepsTheFirstValueOfAKey)
{
    Numbers numbers;
    numbers.insert(3, 30);
    numbers.insert(3, 31);
    EXPECT_EQ(30, numbers.value(3));
    EXPECT_EQ((std::set<int>{3}), numbers.keys());
}

TEST(HashTable, KeysOfEqualHashStandOneBehindTheOther)
{
    Numbers numbers;
    numbers.insert(21, 1);
    numbers.insert(22, 2);
    numbers.insert(23, 3);
    EXPECT_EQ(1, numbers.value(21));
    EXPECT_EQ(2, numbers.value(22));
    EXPECT_EQ(3, numbers.value(23));
    EXPECT_EQ(-1, numbers.value(24));
    EXPECT_EQ(1, numbers.searchLength(21));
    EXPECT_EQ(2, numbers.searchLength(22));
    EXPECT_EQ(3, numbers.searchLength(23));
    EXPECT_EQ(4, numbers.searchLength(24)) << "up to the free slot";
}

TEST(HashTable, GoesOnAtTheFirstSlotBehindTheLast)
{
    Numbers numbers;
    // Eight slots; hash 7 is the last of them.
    numbers.insert(71, 1);
    numbers.insert(72, 2);
    numbers.insert(1, 3);
    EXPECT_EQ(2, numbers.searchLength(72));
    EXPECT_EQ(2, numbers.searchLength(1)) << "72 stands in slot 0";
    EXPECT_EQ(2, numbers.value(72));
    EXPECT_EQ(3, numbers.value(1));
}

TEST(HashTable, GrowsBeforeItIsFullerThanItMayBe)
{
    Numbers numbers;
    for (int i = 0; i < 6; ++i)
        numbers.insert(i, i);
    EXPECT_EQ(7, numbers.searchLength(81)) << "of 8 slots hash 8 has the first, as hash 0";
    numbers.insert(6, 6);
    EXPECT_EQ(1, numbers.searchLength(81)) << "of 16 slots it has its own";
}

TEST(HashTable, KeepsAllKeysWhileItGrows)
{
    Numbers numbers;
    std::set<int> expected;
    for (int i = 0; i < 2000; ++i) {
        numbers.insert(i * 7, i);
        expected.insert(i * 7);
    }
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(i, numbers.value(i * 7));
    EXPECT_EQ(-1, numbers.value(1));
    EXPECT_EQ(expected, numbers.keys());
}

TEST(HashTable, ForgetsAllWhenCleared)
{
    Numbers numbers;
    for (int i = 0; i < 100; ++i)
        numbers.insert(i, i);
    numbers.clear();
    EXPECT_EQ(-1, numbers.value(5));
    EXPECT_EQ(std::set<int>(), numbers.keys());
    numbers.insert(5, 50);
    EXPECT_EQ(50, numbers.value(5));
    EXPECT_EQ((std::set<int>{5}), numbers.keys());
}

TEST(HashTable, ReservingKeepsWhatItHolds)
{
    Numbers numbers;
    numbers.reserve(0);
    numbers.insert(5, 50);
    numbers.reserve(1000);
    numbers.reserve(10);
    EXPECT_EQ(50, numbers.value(5));
    EXPECT_EQ((std::set<int>{5}), numbers.keys());
}

} // namespace
} // namespace plc::test
