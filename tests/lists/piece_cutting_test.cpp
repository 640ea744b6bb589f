#include "tests/lists/variable_lists_fixture.h"

namespace plc::test {
namespace {

using PieceCutting = DriverTest;

Places cut(int total, int maxLen, int address, RW_VAR* left = nullptr)
{
    RW_VAR var = makeVar(3, address, 77);
    QList<RW_VAR> list;
    WhetherGroup(total, maxLen, &var, &list);
    if (left)
        *left = var;
    return places(list);
}

TEST_F(PieceCutting, LastPieceHoldsTheRest)
{
    EXPECT_EQ((Places{{1000, 100}, {1100, 100}, {1200, 50}}), cut(250, 100, 1000));
}

TEST_F(PieceCutting, MultipleOfThePieceSizeHasNoRest)
{
    EXPECT_EQ((Places{{1000, 100}, {1100, 100}}), cut(200, 100, 1000));
}

TEST_F(PieceCutting, TotalUpToThePieceSizeLeavesTheRecordAsItIs)
{
    RW_VAR left;
    for (int total : {100, 99, 1, 0, -1, INT_MIN}) {
        EXPECT_EQ((Places{{1000, 77}}), cut(total, 100, 1000, &left)) << total;
        EXPECT_EQ(1000, left.address);
        EXPECT_EQ(77, left.length);
    }
}

TEST_F(PieceCutting, OneMoreThanThePieceSizeGivesTwoPieces)
{
    EXPECT_EQ((Places{{1000, 100}, {1100, 1}}), cut(101, 100, 1000));
}

TEST_F(PieceCutting, PiecesOfOneByte)
{
    EXPECT_EQ((Places{{5, 1}, {6, 1}, {7, 1}}), cut(3, 1, 5));
    EXPECT_EQ((Places{{5, 77}}), cut(1, 1, 5));
}

TEST_F(PieceCutting, RecordIsLeftAsItsLastPiece)
{
    RW_VAR left;
    cut(250, 100, 1000, &left);
    EXPECT_EQ(1200, left.address);
    EXPECT_EQ(50, left.length);
    cut(200, 100, 1000, &left);
    EXPECT_EQ(1100, left.address);
    EXPECT_EQ(100, left.length);
}

TEST_F(PieceCutting, PiecesCarryTheOtherMembers)
{
    RW_VAR var = fullRecord();
    QList<RW_VAR> list;
    WhetherGroup(3, 2, &var, &list);
    ASSERT_EQ(2, int(list.size()));
    RW_VAR expected = fullRecord();
    expected.length = 2;
    expectEqualRecords(expected, list.at(0));
    expected.address = 12;
    expected.length = 1;
    expectEqualRecords(expected, list.at(1));
}

TEST_F(PieceCutting, AppendsBehindWhatTheListHolds)
{
    RW_VAR var = makeVar(3, 10, 4);
    QList<RW_VAR> list = {makeVar(3, 1, 1)};
    WhetherGroup(4, 4, &var, &list);
    EXPECT_EQ((Places{{1, 1}, {10, 4}}), places(list));
}

TEST_F(PieceCutting, DriverListsAreNotTouched)
{
    cut(250, 100, 1000);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(PieceCutting, AddressesAdvanceModuloTwoToThe32)
{
    EXPECT_EQ((Places{{INT_MAX - 1, 3}, {INT_MIN + 1, 3}, {INT_MIN + 4, 1}}),
              cut(7, 3, INT_MAX - 1));
    EXPECT_EQ((Places{{-3, 2}, {-1, 2}, {1, 1}}), cut(5, 2, -3));
}

TEST_F(PieceCutting, LargestValueIsCut)
{
    // 16777216 = 2 * 8388607 + 2
    EXPECT_EQ((Places{{1000, 8388607}, {8389607, 8388607}, {16778214, 2}}),
              cut(PLC_LARGEST_VALUE, 8388607, 1000));
    EXPECT_EQ((Places{{1000, 77}}), cut(PLC_LARGEST_VALUE, INT_MAX, 1000));
}

TEST_F(PieceCutting, ValueAboveTheLargestIsRefused)
{
    for (int maxLen : {1000, PLC_LARGEST_VALUE, INT_MAX}) {
        for (int total : {PLC_LARGEST_VALUE + 1, INT_MAX}) {
            RW_VAR left;
            EXPECT_EQ(Places{}, cut(total, maxLen, 1000, &left)) << total << ", " << maxLen;
            EXPECT_EQ(1000, left.address);
            EXPECT_EQ(77, left.length);
        }
    }
}

TEST_F(PieceCutting, PieceSizeThatIsNotPositiveAddsNothing)
{
    for (int maxLen : {0, -1, INT_MIN}) {
        for (int total : {0, 1, 250, -1, INT_MIN, INT_MAX}) {
            RW_VAR left;
            EXPECT_EQ(Places{}, cut(total, maxLen, 1000, &left)) << total << ", " << maxLen;
            EXPECT_EQ(1000, left.address);
            EXPECT_EQ(77, left.length);
        }
    }
}

TEST_F(PieceCutting, MorePiecesThanTheLimitAreRefused)
{
    for (int maxLen : {1, 2, 255}) {
        EXPECT_EQ(size_t(PLC_MOST_PIECES), cut(PLC_MOST_PIECES * maxLen, maxLen, 1000).size())
            << maxLen;
        RW_VAR left;
        EXPECT_EQ(Places{}, cut(PLC_MOST_PIECES * maxLen + 1, maxLen, 1000, &left)) << maxLen;
        EXPECT_EQ(Places{}, cut(INT_MAX, maxLen, 1000, &left)) << maxLen;
        EXPECT_EQ(1000, left.address);
        EXPECT_EQ(77, left.length);
    }
}

TEST_F(PieceCutting, NullPointersAddNothing)
{
    RW_VAR var = makeVar(3, 10, 4);
    QList<RW_VAR> list;
    WhetherGroup(250, 100, nullptr, &list);
    EXPECT_TRUE(list.isEmpty());
    WhetherGroup(250, 100, &var, nullptr);
    WhetherGroup(50, 100, nullptr, &list);
    WhetherGroup(50, 100, &var, nullptr);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(10, var.address);
    EXPECT_EQ(4, var.length);
}

TEST_F(PieceCutting, TakesNoLock)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    EXPECT_EQ(3u, cut(250, 100, 1000).size());
}

TEST_F(PieceCutting, PiecesCoverTheTotalWithoutGapOrOverlap)
{
    Random random(31);
    for (int i = 0; i < 2000; ++i) {
        const int maxLen = random.between(1, 200);
        const int total = random.between(maxLen + 1, 3000 + maxLen);
        const int address = random.between(-5000, 5000);
        int end = address;
        for (const std::pair<int, int>& piece : cut(total, maxLen, address)) {
            ASSERT_EQ(end, piece.first);
            ASSERT_GE(piece.second, 1);
            ASSERT_LE(piece.second, maxLen);
            end += piece.second;
        }
        ASSERT_EQ(address + total, end);
    }
}

} // namespace
} // namespace plc::test
