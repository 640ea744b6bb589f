#include "lists/read_list_rebuild.h"

#include <climits>
#include <map>
#include <set>

#include "driver/list_access.h"
#include "lists/variable_lists.h"
#include "support/lock_check.h"
#include "support/random.h"
#include "support/record_checks.h"
#include "support/symbol_fixture.h"
#include "support/watched_text.h"

namespace plc {
namespace test {
namespace {

using AddressSort = DriverTest;
using Folding = DriverTest;
using FoldingWithoutMerging = DriverTest;
using RandomGroups = DriverTest;

RW_VAR entry(int address, int length, const QString& label = QString(), int areaIndex = 3)
{
    RW_VAR var = makeVar(areaIndex, address, length);
    var.label = label;
    return var;
}

QList<RW_VAR> entries(const Places& list)
{
    QList<RW_VAR> out;
    for (const std::pair<int, int>& place : list)
        out.append(entry(place.first, place.second));
    return out;
}

Places folded(const Places& group, int maxLen)
{
    PLC_driver.readList.clear();
    QList<RW_VAR> list = entries(group);
    BitVarReCreat(&list, maxLen);
    return places(PLC_driver.readList);
}

// --- Sorting ---

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

// --- Folding one area's entries ---

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

// --- Rebuilding the whole list ---

class Rebuild : public DriverTest {
protected:
    Rebuild()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, 1000, code));
        variables.append(variable("bit", 13, 35, 40));
        for (int i = 0; i < 200; ++i)
            variables.append(variable(QString("b%1").arg(i), 1, i, 30));
        variables.append(variable("far", 1, 5, -7));
        variables.append(variable("near", 1, 5, 31));
        passSymbols({scope("MAIN", variables)});
        settings.maxReadBytes = 100;
    }

    static HostVarItem item(const QString& label, int count, int station = 0)
    {
        HostVarItem out;
        out.label = label;
        out.count = count;
        out.station = quint8(station);
        return out;
    }

    static int rebuild(QList<HostVarItem> items) { return ReCreatReadVarList(&items); }
    static Places rebuilt(const QList<HostVarItem>& items)
    {
        const int count = rebuild(items);
        EXPECT_EQ(int(PLC_driver.readList.size()), count);
        return places(PLC_driver.readList);
    }
};

TEST_F(Rebuild, EntryCarriesTheItemTheSettingsAndThePlace)
{
    settings.remoteMode = 21;
    settings.localDeviceNo = 22;
    settings.defaultStation = 23;
    HostVarItem var = item("MAIN.code3", 5, 9);
    var.hostWord1 = 77;
    var.subLabel = "second";
    EXPECT_EQ(1, rebuild({var}));
    RW_VAR expected;
    expected.category = 0;
    expected.aux1 = -1;
    expected.aux2 = 0;
    expected.aux3 = 21;
    expected.deviceNo = 22;
    expected.result = 0;
    expected.label = "MAIN.code3";
    expected.subLabel = "second";
    expected.dataType = 3;
    expected.address = 1000;
    expected.station = 23;
    expected.length = 10;
    expected.aux12 = 0;
    expected.areaIndex = 3;
    expectEqualRecords(expected, PLC_driver.readList.at(0));
}

TEST_F(Rebuild, StationIsTheItemsOwnOnlyWithSeveralStations)
{
    settings.defaultStation = 23;
    rebuild({item("MAIN.code3", 1, 255)});
    EXPECT_EQ(23, PLC_driver.readList.at(0).station);
    settings.multiStation = -1;
    rebuild({item("MAIN.code3", 1, 255), item("MAIN.code4", 1, 0)});
    EXPECT_EQ(255, PLC_driver.readList.at(0).station);
    EXPECT_EQ(0, PLC_driver.readList.at(1).station);
}

TEST_F(Rebuild, EveryTypeCodeIsConverted)
{
    struct Row {
        int code;
        int length;
    };
    // Seven of each.
    const Row rows[] = {{1, 7},  {2, 7},  {3, 14}, {4, 14}, {5, 16}, {6, 16},  {7, 16}, {8, 16},
                        {9, 16}, {10, 7}, {11, 7}, {14, 7}, {15, 7}, {16, 14}, {17, 16}};
    for (const Row& row : rows) {
        EXPECT_EQ(1, rebuild({item(QString("MAIN.code%1").arg(row.code), 7)})) << row.code;
        const RW_VAR var = PLC_driver.readList.at(0);
        EXPECT_EQ(row.code, var.dataType);
        EXPECT_EQ(1000, var.address) << row.code;
        EXPECT_EQ(row.code, var.areaIndex);
        EXPECT_EQ(row.length, var.length) << row.code;
    }
    // Bit 1000 is bit 8 of word 62: (8 + 7 + 15) / 16 * 2
    EXPECT_EQ((Places{{62, 2}}), rebuilt({item("MAIN.code13", 7)}));
    EXPECT_EQ(16, PLC_driver.readList.at(0).dataType);
}

TEST_F(Rebuild, BitsBecomeWords)
{
    EXPECT_EQ((Places{{2, 4}}), rebuilt({item("MAIN.bit", 20)}));
    EXPECT_EQ(16, PLC_driver.readList.at(0).dataType);
    EXPECT_EQ(40, PLC_driver.readList.at(0).areaIndex);
}

TEST_F(Rebuild, WhatDoesNotResolveOrCannotBeReadIsSkipped)
{
    EXPECT_EQ(
        (Places{{1000, 2}}),
        rebuilt({item("MAIN.code0", 1), item("MAIN.nosuch", 1), item("", 1), item("MAIN.code3", 1),
                 item("MAIN.code12", 1), item("MAIN.code18", 1), item("OTHER.code3", 1)}));
}

TEST_F(Rebuild, ListOfWhatIsSkippedIsEmpty)
{
    EXPECT_EQ(0, rebuild({item("MAIN.code0", 1), item("MAIN.nosuch", 1)}));
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(Rebuild, AreasAreVisitedAscendingAndNeverMerged)
{
    EXPECT_EQ((Places{{5, 1}, {5, 1}, {5, 1}}),
              rebuilt({item("MAIN.near", 1), item("MAIN.b5", 1), item("MAIN.far", 1)}));
    EXPECT_EQ(-7, PLC_driver.readList.at(0).areaIndex);
    EXPECT_EQ(30, PLC_driver.readList.at(1).areaIndex);
    EXPECT_EQ(31, PLC_driver.readList.at(2).areaIndex);
}

TEST_F(Rebuild, VariablesOfOneAreaAreSortedAndMerged)
{
    EXPECT_EQ((Places{{3, 18}, {150, 4}}),
              rebuilt({item("MAIN.b150", 4), item("MAIN.b20", 1), item("MAIN.b3", 2)}));
    EXPECT_EQ("MAIN.b3", PLC_driver.readList.at(0).label);
}

TEST_F(Rebuild, WorkedGroupOfFour)
{
    QList<Label_Type_Info> variables = {variable("a", 1, 0, 3), variable("b", 1, 50, 3),
                                        variable("c", 1, 90, 3), variable("d", 1, 200, 3)};
    passSymbols({scope("GROUP", variables)});
    EXPECT_EQ((Places{{0, 100}, {100, 20}, {200, 4}}),
              rebuilt({item("GROUP.d", 4), item("GROUP.b", 20), item("GROUP.a", 10),
                       item("GROUP.c", 30)}));
}

TEST_F(Rebuild, VariablesOfDifferentStationsAreMergedTogether)
{
    settings.multiStation = 1;
    EXPECT_EQ((Places{{3, 3}}), rebuilt({item("MAIN.b3", 2, 1), item("MAIN.b5", 1, 2)}));
    EXPECT_EQ(1, PLC_driver.readList.at(0).station);
}

TEST_F(Rebuild, EqualVariablesAreFoldedInTheirOrder)
{
    HostVarItem first = item("MAIN.b3", 2);
    first.subLabel = "first";
    HostVarItem second = item("MAIN.b3", 4);
    second.subLabel = "second";
    EXPECT_EQ((Places{{3, 4}}), rebuilt({first, second}));
    EXPECT_EQ("first", PLC_driver.readList.at(0).subLabel);
}

TEST_F(Rebuild, TwoLengthsAtOneAddress)
{
    const QList<HostVarItem> items = {item("MAIN.b3", 4), item("MAIN.b3", 8)};
    settings.maxReadBytes = 1;
    EXPECT_EQ((Places{{3, 8}}), rebuilt(items));
    settings.maxReadBytes = 8;
    EXPECT_EQ((Places{{3, 8}}), rebuilt(items));
    settings.maxReadBytes = 4;
    EXPECT_EQ((Places{{3, 4}, {7, 4}}), rebuilt(items));
}

TEST_F(Rebuild, LongVariableIsCutUnlessTheLimitIsOne)
{
    EXPECT_EQ((Places{{0, 100}, {100, 100}, {200, 50}}), rebuilt({item("MAIN.b0", 250)}));
    settings.maxReadBytes = 1;
    EXPECT_EQ((Places{{0, 250}}), rebuilt({item("MAIN.b0", 250)}));
}

TEST_F(Rebuild, VariableWithoutLengthAddsNothing)
{
    EXPECT_EQ(Places{}, rebuilt({item("MAIN.b0", 0)}));
    EXPECT_EQ(Places{}, rebuilt({item("MAIN.b0", -10), item("MAIN.code3", INT_MAX)}));
    EXPECT_EQ((Places{{7, 1}}), rebuilt({item("MAIN.b0", 0), item("MAIN.b7", 1)}));
}

TEST_F(Rebuild, HugeVariableIsSkippedAndTheOthersAreRead)
{
    for (int maxReadBytes : {1, 2, INT_MAX}) {
        settings.maxReadBytes = maxReadBytes;
        EXPECT_EQ((Places{{7, 1}}), rebuilt({item("MAIN.b0", INT_MAX), item("MAIN.b7", 1)}))
            << maxReadBytes;
    }
}

TEST_F(Rebuild, ReplacesTheWholeList)
{
    PLC_driver.readList.append(entry(900, 900));
    EXPECT_EQ((Places{{3, 1}}), rebuilt({item("MAIN.b3", 1)}));
    EXPECT_EQ((Places{{4, 1}}), rebuilt({item("MAIN.b4", 1)}));
}

TEST_F(Rebuild, StartsTheScanAnew)
{
    PLC_driver.cycleCount = 5;
    settings.scanDone = 1;
    rebuild({item("MAIN.nosuch", 1)});
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(0, settings.scanDone);
}

TEST_F(Rebuild, EmptyInputEmptiesTheListAndLeavesTheScanAlone)
{
    PLC_driver.readList.append(entry(900, 900));
    PLC_driver.cycleCount = 5;
    settings.scanDone = 1;
    EXPECT_EQ(0, rebuild({}));
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
    EXPECT_EQ(5, PLC_driver.cycleCount);
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(Rebuild, NullInputChangesNothing)
{
    PLC_driver.readList.append(entry(900, 900));
    PLC_driver.cycleCount = 5;
    settings.scanDone = 1;
    EXPECT_EQ(0, ReCreatReadVarList(nullptr));
    EXPECT_EQ((Places{{900, 900}}), places(PLC_driver.readList));
    EXPECT_EQ(5, PLC_driver.cycleCount);
    EXPECT_EQ(1, settings.scanDone);
}

TEST_F(Rebuild, LimitThatIsNotPositiveGivesNoEntries)
{
    for (int maxReadBytes : {0, -1, INT_MIN}) {
        PLC_driver.readList.append(entry(900, 900));
        settings.maxReadBytes = maxReadBytes;
        EXPECT_EQ(0, rebuild({item("MAIN.b3", 1)})) << maxReadBytes;
        EXPECT_TRUE(PLC_driver.readList.isEmpty());
    }
}

TEST_F(Rebuild, WhatIsAboveALimitIsSkipped)
{
    settings.maxReadBytes = INT_MAX;
    EXPECT_EQ(1, rebuild({item("MAIN.b3", PLC_LARGEST_VALUE)}));
    EXPECT_EQ(PLC_LARGEST_VALUE, PLC_driver.readList.first().length);
    EXPECT_EQ(0, rebuild({item("MAIN.b3", PLC_LARGEST_VALUE + 1)}));
    EXPECT_EQ(0, rebuild({item("MAIN.b3", INT_MAX)}));
    settings.maxReadBytes = 2;
    EXPECT_EQ(PLC_MOST_PIECES, rebuild({item("MAIN.b3", 2 * PLC_MOST_PIECES)}));
    EXPECT_EQ(0, rebuild({item("MAIN.b3", 2 * PLC_MOST_PIECES + 1)}));
    EXPECT_EQ(1, rebuild({item("MAIN.b3", 2 * PLC_MOST_PIECES + 1), item("MAIN.b9", 1)}));
}

TEST_F(Rebuild, WithoutSettingsNothingIsBuilt)
{
    SetComInfo(nullptr);
    EXPECT_EQ(0, rebuild({item("MAIN.b3", 1)}));
    EXPECT_TRUE(PLC_driver.readList.isEmpty());
}

TEST_F(Rebuild, InputIsNotChanged)
{
    QList<HostVarItem> items = {item("MAIN.b9", 250, 4), item("MAIN.b3", 2, 5)};
    items[0].hostWord1 = 6;
    ReCreatReadVarList(&items);
    ASSERT_EQ(2, int(items.size()));
    EXPECT_EQ("MAIN.b9", items.at(0).label);
    EXPECT_EQ(250, items.at(0).count);
    EXPECT_EQ(4, items.at(0).station);
    EXPECT_EQ(6, items.at(0).hostWord1);
    EXPECT_EQ("MAIN.b3", items.at(1).label);
    EXPECT_EQ(2, items.at(1).count);
}

TEST_F(Rebuild, OtherListsAreNotTouched)
{
    PLC_driver.writeList.append(entry(1, 1));
    PLC_driver.onceReadList.append(entry(2, 2));
    rebuild({item("MAIN.b3", 1)});
    EXPECT_EQ(1, int(PLC_driver.writeList.size()));
    EXPECT_EQ(1, int(PLC_driver.onceReadList.size()));
}

TEST_F(Rebuild, RunsUnderTheListLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { rebuild({item("MAIN.b3", 1)}); }));
    EXPECT_TRUE(waitsFor(PLC_driver.listMutex, [] { rebuild({}); }));
}

TEST_F(Rebuild, ListsAreFreeWhileLabelsAreResolved)
{
    bool isFree = false;
    const WatchedText label("MAIN.b3", [&] {
        isFree = PLC_driver.listMutex.tryLock();
        if (isFree)
            PLC_driver.listMutex.unlock();
    });
    EXPECT_EQ(1, rebuild({item(label.text(), 1)}));
    EXPECT_TRUE(label.wasRead());
    EXPECT_TRUE(isFree);
    PLC_driver.readList.clear(); // its entry shares the label
}

// --- Every group against the steps taken literally ---

void sortByExchange(QList<RW_VAR>& list)
{
    for (int pass = 1; pass < int(list.size()); ++pass) {
        for (int j = int(list.size()) - 1; j >= pass; --j) {
            if (list.at(j).address < list.at(j - 1).address) {
                const RW_VAR moved = list.at(j);
                list[j] = list.at(j - 1);
                list[j - 1] = moved;
            }
        }
    }
}

int wrapped(qint64 value)
{
    return int(quint32(quint64(value)));
}

void foldWithoutMerging(const QList<RW_VAR>& group, QList<RW_VAR>& out)
{
    int address = 0;
    int length = 0;
    for (int i = 0; i < int(group.size()); ++i) {
        const RW_VAR& e = group.at(i);
        if (i > 0 && e.address == address) {
            if (e.length > length) {
                out.last().length = e.length;
                length = e.length;
            }
        } else {
            out.append(e);
            length = e.length;
        }
        address = e.address;
    }
}

void foldMerging(const QList<RW_VAR>& group, int maxLen, QList<RW_VAR>& out)
{
    const int before = int(out.size());
    qint64 lastAddress = 0;
    qint64 lastLength = 0;
    for (RW_VAR e : group) {
        const bool isFirst = int(out.size()) == before;
        if (isFirst || e.address >= lastAddress + maxLen) {
            for (qint64 rest = e.length; rest > 0; rest -= e.length) {
                e.length = int(qMin(rest, qint64(maxLen)));
                out.append(e);
                e.address = wrapped(qint64(e.address) + e.length);
            }
        } else {
            const qint64 end = qint64(e.address) + e.length;
            if (end > lastAddress + lastLength) {
                qint64 rest = end - lastAddress;
                RW_VAR copy = out.last();
                copy.length = int(qMin(rest, qint64(maxLen)));
                out.last().length = copy.length;
                rest -= copy.length;
                while (rest > 0) {
                    copy.address = wrapped(qint64(copy.address) + copy.length);
                    copy.length = int(qMin(rest, qint64(maxLen)));
                    out.append(copy);
                    rest -= copy.length;
                }
            }
        }
        if (!out.isEmpty()) {
            lastAddress = out.last().address;
            lastLength = out.last().length;
        }
    }
}

void foldLiterally(const QList<RW_VAR>& group, int maxLen, QList<RW_VAR>& out)
{
    if (maxLen == 1)
        foldWithoutMerging(group, out);
    else if (maxLen > 1)
        foldMerging(group, maxLen, out);
}

int randomLimit(Random& random)
{
    static const int limits[] = {1, 2, 3, 4, 7, 8, 16, 100, 200, 999, 65536, INT_MAX};
    return random.oneIn(3) ? random.between(1, 60) : limits[random.below(12)];
}

QList<RW_VAR> randomGroup(Random& random, int areaIndex)
{
    QList<RW_VAR> group;
    const int reach = random.oneIn(3) ? 2000 : random.between(1, 300);
    const int base = random.oneIn(4) ? random.between(-500, 0) : random.below(500);
    for (int i = random.below(24); i > 0; --i) {
        const int length = random.oneIn(12)  ? random.between(-40, 0)
                           : random.oneIn(9) ? random.between(1, 500)
                                             : random.between(1, 20);
        RW_VAR var = entry(base + random.below(reach), length, QString::number(i), areaIndex);
        var.station = random.below(3);
        var.dataType = random.between(1, 17);
        group.append(var);
    }
    return group;
}

TEST_F(RandomGroups, SortAsByExchangingNeighbours)
{
    Random random(1);
    for (int round = 0; round < 3000; ++round) {
        QList<RW_VAR> expected = randomGroup(random, 3);
        QList<RW_VAR> actual = expected;
        sortByExchange(expected);
        Bubble_Sort(&actual);
        expectEqualLists(expected, actual);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST_F(RandomGroups, FoldAsTheStepsSay)
{
    Random random(2);
    for (int round = 0; round < 8000; ++round) {
        const int maxLen = randomLimit(random);
        QList<RW_VAR> expected;
        PLC_driver.readList.clear();
        for (int area = random.between(1, 3); area > 0; --area) {
            QList<RW_VAR> group = randomGroup(random, area);
            sortByExchange(group);
            foldLiterally(group, maxLen, expected);
            BitVarReCreat(&group, maxLen);
        }
        expectEqualLists(expected, PLC_driver.readList);
        ASSERT_FALSE(HasFailure()) << "round " << round << ", limit " << maxLen;
    }
}

TEST_F(RandomGroups, FoldAsTheStepsSayAtTheEndsOfTheAddresses)
{
    Random random(3);
    const int anchors[] = {INT_MIN, INT_MAX - 300, -150, INT_MAX - 5};
    for (int round = 0; round < 4000; ++round) {
        const int maxLen = random.oneIn(4) ? INT_MAX - random.below(3) : random.between(2, 80);
        QList<RW_VAR> group;
        const int anchor = anchors[random.below(4)];
        for (int i = random.between(1, 12); i > 0; --i) {
            const int step = random.below(qMin(300, INT_MAX - qMax(anchor, 1) + 1));
            const bool isLong = maxLen > 1000 && random.oneIn(3);
            const int length =
                isLong ? random.between(1, PLC_LARGEST_VALUE) : random.between(-3, 120);
            group.append(entry(anchor + step, length, QString::number(i)));
        }
        sortByExchange(group);
        QList<RW_VAR> expected;
        foldLiterally(group, maxLen, expected);
        PLC_driver.readList.clear();
        BitVarReCreat(&group, maxLen);
        expectEqualLists(expected, PLC_driver.readList);
        ASSERT_FALSE(HasFailure()) << "round " << round << ", limit " << maxLen;
    }
}

TEST_F(RandomGroups, WholeRebuildsFollowTheStepsFromTheLabelsOn)
{
    Random random(4);
    QList<Label_Type_Info> variables;
    for (int i = 0; i < 120; ++i) {
        variables.append(variable(QString("v%1").arg(i), random.between(0, 18),
                                  random.between(-50, 1500), random.between(-2, 2)));
    }
    passSymbols({scope("MAIN", variables)});
    for (int round = 0; round < 1500; ++round) {
        settings.maxReadBytes = randomLimit(random);
        QList<HostVarItem> items;
        std::map<int, QList<RW_VAR>> groups;
        for (int i = random.below(40); i > 0; --i) {
            const Label_Type_Info& symbol = variables.at(random.below(120));
            HostVarItem item;
            item.label = "MAIN." + symbol.name;
            item.subLabel = QString::number(i);
            item.count = random.oneIn(10) ? random.between(-9, 0) : random.between(1, 60);
            items.append(item);
            RW_VAR var = entry(symbol.offset, 0, item.label, symbol.areaInfo.at(0));
            var.aux1 = -1;
            var.station = 1;
            var.subLabel = item.subLabel;
            var.dataType = symbol.typeFlags;
            switch (symbol.typeFlags) {
                case 1:
                case 2:
                case 10:
                case 11:
                case 14:
                case 15:
                    var.length = item.count;
                    break;
                case 3:
                case 4:
                case 16:
                    var.length = item.count * 2;
                    break;
                case 5:
                case 6:
                case 7:
                case 17:
                    var.length = (item.count + 1) / 2 * 4;
                    break;
                case 8:
                case 9:
                    var.length = (item.count + 3) / 4 * 8;
                    break;
                case 13:
                    var.length = (symbol.offset % 16 + item.count + 15) / 16 * 2;
                    var.address = symbol.offset / 16;
                    var.dataType = 16;
                    break;
                default:
                    continue;
            }
            groups[var.areaIndex].append(var);
        }
        QList<RW_VAR> expected;
        for (auto& group : groups) {
            sortByExchange(group.second);
            foldLiterally(group.second, settings.maxReadBytes, expected);
        }
        ASSERT_EQ(int(expected.size()), ReCreatReadVarList(&items));
        expectEqualLists(expected, PLC_driver.readList);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST_F(RandomGroups, EveryByteOfEveryVariableIsRead)
{
    Random random(6);
    for (int round = 0; round < 1000; ++round) {
        const int maxLen = random.between(2, 300);
        QList<RW_VAR> group = randomGroup(random, 3);
        Bubble_Sort(&group);
        PLC_driver.readList.clear();
        BitVarReCreat(&group, maxLen);
        std::set<int> bytes;
        for (const RW_VAR& var : PLC_driver.readList) {
            ASSERT_LE(var.length, maxLen);
            ASSERT_GE(var.length, 1);
            for (int i = 0; i < var.length; ++i)
                bytes.insert(var.address + i);
        }
        for (const RW_VAR& var : group) {
            for (int i = 0; i < var.length; ++i)
                ASSERT_TRUE(bytes.count(var.address + i)) << "round " << round;
        }
    }
}

} // namespace
} // namespace test
} // namespace plc
