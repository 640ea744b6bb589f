#include "tests/lists/folding_fixture.h"

namespace plc::test {
namespace {

using AddressSort = DriverTest;
using Folding = DriverTest;
using FoldingWithoutMerging = DriverTest;

Places sorted(const Places& unsorted)
{
    QList<RW_VAR> list = entries(unsorted);
    Bubble_Sort(&list);
    return places(list);
}

TEST_F(AddressSort, AscendsByAddress)
{
    EXPECT_EQ((Places{{1, 9}, {2, 8}, {3, 7}}), sorted({{3, 7}, {1, 9}, {2, 8}}));
}

TEST_F(AddressSort, ComparesWithSign)
{
    EXPECT_EQ((Places{{INT_MIN, 1}, {-1, 2}, {0, 3}, {INT_MAX, 4}}),
              sorted({{INT_MAX, 4}, {0, 3}, {-1, 2}, {INT_MIN, 1}}));
}

TEST_F(AddressSort, EqualAddressesKeepTheirOrder)
{
    EXPECT_EQ((Places{{1, 5}, {1, 2}, {1, 9}, {4, 3}, {4, 1}, {7, 0}}),
              sorted({{4, 3}, {1, 5}, {7, 0}, {1, 2}, {4, 1}, {1, 9}}));
}

TEST_F(AddressSort, ListsOfFewerThanTwoEntriesAreLeftAlone)
{
    EXPECT_EQ(Places{}, sorted({}));
    EXPECT_EQ((Places{{5, 6}}), sorted({{5, 6}}));
}

TEST_F(AddressSort, NullIsLeftAlone)
{
    Bubble_Sort(nullptr);
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(AddressSort, MovesWholeRecords)
{
    RW_VAR first = fullRecord();
    first.address = 1;
    RW_VAR second = entry(2, 3, "second");
    QList<RW_VAR> list = {second, first};
    Bubble_Sort(&list);
    expectEqualRecords(first, list.at(0));
    expectEqualRecords(second, list.at(1));
}

TEST_F(AddressSort, TakesAHundredThousandEntriesInNoTime)
{
    QList<RW_VAR> list;
    for (int i = 0; i < 100000; ++i)
        list.append(entry(100000 - i / 2, i));
    Bubble_Sort(&list);
    for (int i = 0; i < 100000; ++i) {
        ASSERT_EQ(50001 + i / 2, list.at(i).address);
        ASSERT_EQ(i % 2, list.at(i).length % 2) << i;
    }
}

TEST_F(Folding, NeighboursAreMergedUpToTheLimit)
{
    EXPECT_EQ((Places{{0, 100}, {100, 20}, {200, 4}}),
              folded({{0, 10}, {50, 20}, {90, 30}, {200, 4}}, 100));
}

TEST_F(Folding, GapsBelowTheLimitAreReadWithTheirNeighbours)
{
    EXPECT_EQ((Places{{0, 20}}), folded({{0, 1}, {19, 1}}, 20));
    EXPECT_EQ((Places{{0, 1}, {20, 1}}), folded({{0, 1}, {20, 1}}, 20));
}

TEST_F(Folding, StartIsMeasuredFromTheStartOfTheLastEntry)
{
    // 19 lies in reach of (0, 20); the piece that it needs beyond starts at 20.
    EXPECT_EQ((Places{{0, 20}, {20, 1}}), folded({{0, 1}, {19, 2}}, 20));
    // And what follows is measured from that piece.
    EXPECT_EQ((Places{{0, 20}, {20, 20}, {40, 2}}), folded({{0, 1}, {19, 2}, {39, 3}}, 20));
}

TEST_F(Folding, CoveredEntriesAddNothing)
{
    EXPECT_EQ((Places{{0, 10}}), folded({{0, 10}, {0, 10}, {2, 8}, {9, 1}}, 100));
}

TEST_F(Folding, EqualAddressesTakeTheGreatestLength)
{
    EXPECT_EQ((Places{{40, 8}}), folded({{40, 4}, {40, 8}}, 8));
    EXPECT_EQ((Places{{40, 8}}), folded({{40, 8}, {40, 4}}, 8));
    EXPECT_EQ((Places{{40, 8}}), folded({{40, 4}, {40, 8}}, 1000));
    EXPECT_EQ((Places{{40, 4}, {44, 4}}), folded({{40, 4}, {40, 8}}, 4));
}

TEST_F(Folding, LongEntryIsCutIntoPieces)
{
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 50}}), folded({{0, 250}}, 100));
    EXPECT_EQ((Places{{0, 100}, {100, 100}}), folded({{0, 200}}, 100));
    EXPECT_EQ((Places{{0, 100}}), folded({{0, 100}}, 100));
}

TEST_F(Folding, EntryBehindALongOneIsMeasuredFromItsLastPiece)
{
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 64}}), folded({{0, 250}, {260, 4}}, 100));
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 50}, {300, 4}}),
              folded({{0, 250}, {300, 4}}, 100));
}

TEST_F(Folding, EntryInsideAnEarlierPieceOfALongOneIsCovered)
{
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 50}}), folded({{0, 250}, {20, 10}}, 100));
    // Its end counts: 30 bytes beyond the last piece's end.
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 80}}), folded({{0, 250}, {20, 260}}, 100));
}

TEST_F(Folding, MergedPiecesCarryTheLastEntrysMembers)
{
    RW_VAR first = fullRecord();
    first.address = 0;
    first.length = 10;
    RW_VAR second = entry(90, 130, "second");
    second.station = 99;
    QList<RW_VAR> group = {first, second};
    BitVarReCreat(&group, 100);
    RW_VAR expected = first;
    expected.length = 100;
    ASSERT_EQ(3, int(PLC_driver.readList.size()));
    expectEqualRecords(expected, PLC_driver.readList.at(0));
    expected.address = 100;
    expectEqualRecords(expected, PLC_driver.readList.at(1));
    expected.address = 200;
    expected.length = 20;
    expectEqualRecords(expected, PLC_driver.readList.at(2));
}

TEST_F(Folding, CutPiecesCarryTheEntrysMembers)
{
    RW_VAR var = fullRecord();
    var.length = 5;
    QList<RW_VAR> group = {var};
    BitVarReCreat(&group, 3);
    ASSERT_EQ(2, int(PLC_driver.readList.size()));
    RW_VAR expected = var;
    expected.length = 3;
    expectEqualRecords(expected, PLC_driver.readList.at(0));
    expected.address += 3;
    expected.length = 2;
    expectEqualRecords(expected, PLC_driver.readList.at(1));
}

TEST_F(Folding, EntryWithoutLengthThatStartsARangeAddsNothing)
{
    EXPECT_EQ(Places{}, folded({{0, 0}}, 100));
    EXPECT_EQ(Places{}, folded({{0, -5}}, 100));
    EXPECT_EQ((Places{{0, 10}, {300, 4}}), folded({{0, 10}, {200, 0}, {300, 4}}, 100));
}

TEST_F(Folding, EntryWithoutLengthStillStretchesTheLastOneToItsPlace)
{
    EXPECT_EQ((Places{{0, 50}}), folded({{0, 10}, {50, 0}}, 100));
    EXPECT_EQ((Places{{0, 45}}), folded({{0, 10}, {50, -5}}, 100));
    EXPECT_EQ((Places{{0, 10}}), folded({{0, 10}, {12, -2}}, 100));
    EXPECT_EQ((Places{{0, 10}}), folded({{0, 10}, {5, 0}}, 100));
}

TEST_F(Folding, FirstEntryThatAddsSomethingStartsARange)
{
    EXPECT_EQ((Places{{5, 10}}), folded({{0, 0}, {5, 10}}, 100));
    EXPECT_EQ((Places{{5, 10}}), folded({{0, -1}, {3, 0}, {5, 10}}, 100));
    EXPECT_EQ((Places{{-50, 10}}), folded({{-60, 0}, {-50, 10}}, 100));
}

TEST_F(Folding, GroupStartsItsOwnRangeBehindThatOfAnotherArea)
{
    QList<RW_VAR> first = {entry(0, 10, "first", 1)};
    QList<RW_VAR> second = {entry(20, 5, "second", 2)};
    BitVarReCreat(&first, 100);
    BitVarReCreat(&second, 100);
    EXPECT_EQ((Places{{0, 10}, {20, 5}}), places(PLC_driver.readList));
    EXPECT_EQ("second", PLC_driver.readList.at(1).label);
}

TEST_F(Folding, GroupThatBeginsWithoutLengthStillStartsItsOwnRange)
{
    QList<RW_VAR> first = {entry(0, 10, "first", 1)};
    QList<RW_VAR> second = {entry(0, 0, "empty", 2), entry(3, -1, "less", 2),
                            entry(20, 5, "second", 2), entry(30, 5, "third", 2)};
    BitVarReCreat(&first, 100);
    BitVarReCreat(&second, 100);
    EXPECT_EQ((Places{{0, 10}, {20, 15}}), places(PLC_driver.readList));
    EXPECT_EQ(2, PLC_driver.readList.at(1).areaIndex);
    EXPECT_EQ("second", PLC_driver.readList.at(1).label);
}

TEST_F(Folding, NegativeAddressesAreMergedAlike)
{
    EXPECT_EQ((Places{{-20, 30}}), folded({{-20, 5}, {-3, 13}}, 100));
    EXPECT_EQ((Places{{-200, 5}, {-3, 13}}), folded({{-200, 5}, {-3, 13}}, 100));
}

TEST_F(Folding, EndsAndSpansAreComparedExactly)
{
    // 2147483640 + 100 lies above the largest signed address and yet reaches behind the last entry.
    EXPECT_EQ((Places{{INT_MAX - 27, 50}, {INT_MIN + 22, 50}, {INT_MIN + 72, 20}}),
              folded({{INT_MAX - 27, 30}, {INT_MAX - 7, 100}}, 50));
    EXPECT_EQ((Places{{INT_MIN, 1}, {INT_MAX, 1}}), folded({{INT_MIN, 1}, {INT_MAX, 1}}, INT_MAX));
    EXPECT_EQ((Places{{INT_MAX - 10, 1}, {INT_MAX, 1}}),
              folded({{INT_MAX - 10, 1}, {INT_MAX, 1}}, 10));
    EXPECT_EQ((Places{{INT_MAX - 10, 11}}), folded({{INT_MAX - 10, 1}, {INT_MAX, 1}}, 11));
}

TEST_F(Folding, LongEntryAdvancesItsAddressModuloTwoToThe32)
{
    EXPECT_EQ((Places{{INT_MAX - 1, 3}, {INT_MIN + 1, 3}, {INT_MIN + 4, 1}}),
              folded({{INT_MAX - 1, 7}}, 3));
}

TEST_F(Folding, LargestLimitMergesAllThatLiesInReach)
{
    EXPECT_EQ((Places{{0, INT_MAX}}), folded({{0, 1}, {INT_MAX - 1, 1}}, INT_MAX));
    EXPECT_EQ((Places{{0, 1}, {INT_MAX, 1}}), folded({{0, 1}, {INT_MAX, 1}}, INT_MAX));
    // Span 2147483648: one byte more than one entry can hold.
    EXPECT_EQ((Places{{0, INT_MAX}, {INT_MAX, 1}}), folded({{0, 1}, {INT_MAX - 1, 2}}, INT_MAX));
}

TEST_F(Folding, EntryOfMorePiecesThanTheLimitIsRefused)
{
    for (int maxLen : {2, 100}) {
        const int longest = PLC_MOST_PIECES * maxLen;
        EXPECT_EQ(size_t(PLC_MOST_PIECES), folded({{0, longest}}, maxLen).size()) << maxLen;
        EXPECT_EQ(Places{}, folded({{0, longest + 1}}, maxLen)) << maxLen;
        EXPECT_EQ(Places{}, folded({{0, INT_MAX}}, maxLen)) << maxLen;
        EXPECT_EQ((Places{{50, 2}}), folded({{0, INT_MAX}, {50, 2}}, maxLen)) << maxLen;
    }
}

TEST_F(Folding, LimitsOfAnEntryDoNotDependOnItsNeighbours)
{
    EXPECT_EQ((Places{{0, 2}, {10, 2}}), folded({{0, 2}, {1, INT_MAX}, {10, 2}}, 5));
    const int longest = PLC_MOST_PIECES * 5;
    // The entry alone makes as many pieces as it may, with the one before it one more.
    EXPECT_EQ(size_t(PLC_MOST_PIECES) + 1, folded({{0, 2}, {1, longest}}, 5).size());
    EXPECT_EQ((Places{{0, 2}}), folded({{0, 2}, {1, longest + 1}}, 5));
}

TEST_F(Folding, EntryAboveTheLargestValueIsRefused)
{
    for (int maxLen : {1, 1000, INT_MAX}) {
        EXPECT_EQ((Places{{0, 1}}),
                  folded({{0, 1}, {0, PLC_LARGEST_VALUE + 1}, {0, INT_MAX}}, maxLen))
            << maxLen;
        EXPECT_EQ(Places{}, folded({{5, PLC_LARGEST_VALUE + 1}}, maxLen)) << maxLen;
    }
    EXPECT_EQ((Places{{0, PLC_LARGEST_VALUE}}), folded({{0, PLC_LARGEST_VALUE}}, 1));
    EXPECT_EQ((Places{{0, PLC_LARGEST_VALUE}}), folded({{0, PLC_LARGEST_VALUE}}, INT_MAX));
}

TEST_F(Folding, GroupItselfIsNotChanged)
{
    for (int maxLen : {1, 3, 100}) {
        QList<RW_VAR> group = entries({{0, 10}, {0, 20}, {50, 250}, {1000, 0}});
        BitVarReCreat(&group, maxLen);
        EXPECT_EQ((Places{{0, 10}, {0, 20}, {50, 250}, {1000, 0}}), places(group)) << maxLen;
    }
}

TEST_F(Folding, LimitThatIsNotPositiveAddsNothing)
{
    for (int maxLen : {0, -1, -100, INT_MIN})
        EXPECT_EQ(Places{}, folded({{0, 10}, {50, 250}}, maxLen)) << maxLen;
}

TEST_F(Folding, NullAndEmptyGroupsAddNothing)
{
    PLC_driver.readList.append(entry(7, 8));
    for (int maxLen : {1, 100}) {
        BitVarReCreat(nullptr, maxLen);
        QList<RW_VAR> empty;
        BitVarReCreat(&empty, maxLen);
    }
    EXPECT_EQ((Places{{7, 8}}), places(PLC_driver.readList));
}

TEST_F(FoldingWithoutMerging, NoEntryIsCutOrMerged)
{
    EXPECT_EQ((Places{{0, 250}}), folded({{0, 250}}, 1));
    EXPECT_EQ((Places{{0, 10}, {5, 10}, {10, 1}, {11, 1}}),
              folded({{0, 10}, {5, 10}, {10, 1}, {11, 1}}, 1));
}

TEST_F(FoldingWithoutMerging, EqualAddressesTakeTheGreatestLength)
{
    EXPECT_EQ((Places{{40, 8}}), folded({{40, 4}, {40, 8}}, 1));
    EXPECT_EQ((Places{{40, 8}}), folded({{40, 8}, {40, 4}}, 1));
    EXPECT_EQ((Places{{40, 8}}), folded({{40, 8}, {40, 8}}, 1));
    EXPECT_EQ((Places{{40, 9}, {41, 3}}),
              folded({{40, 2}, {40, 9}, {40, 5}, {40, 8}, {41, 3}, {41, 1}}, 1));
}

TEST_F(FoldingWithoutMerging, EntriesWithoutLengthAreKept)
{
    EXPECT_EQ((Places{{0, 0}, {1, -5}, {2, 4}}), folded({{0, 0}, {1, -5}, {2, 4}}, 1));
    EXPECT_EQ((Places{{0, 0}}), folded({{0, -5}, {0, 0}}, 1));
}

TEST_F(FoldingWithoutMerging, GreaterLengthGoesToTheFirstEntryOfTheAddress)
{
    QList<RW_VAR> group = {entry(40, 4, "first"), entry(40, 8, "second")};
    BitVarReCreat(&group, 1);
    ASSERT_EQ(1, int(PLC_driver.readList.size()));
    EXPECT_EQ("first", PLC_driver.readList.at(0).label);
    EXPECT_EQ(8, PLC_driver.readList.at(0).length);
}

TEST_F(FoldingWithoutMerging, GroupStartsItsOwnEntryBehindOneOfAnotherArea)
{
    QList<RW_VAR> first = {entry(40, 4, "first", 1)};
    QList<RW_VAR> second = {entry(40, 8, "second", 2)};
    BitVarReCreat(&first, 1);
    BitVarReCreat(&second, 1);
    EXPECT_EQ((Places{{40, 4}, {40, 8}}), places(PLC_driver.readList));
}

} // namespace
} // namespace plc::test
