#include "host/runtime/scan_layout.h"

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>

#include "host/wire/read_limits.h"
#include "tests/support/random.h"

namespace plc::host {

bool operator==(const ScanEntry& a, const ScanEntry& b)
{
    return a.range.area == b.range.area && a.range.start == b.range.start &&
           a.range.size == b.range.size && a.station == b.station && a.rows == b.rows;
}

void PrintTo(const ScanEntry& entry, std::ostream* out)
{
    *out << "area " << entry.range.area << " from " << entry.range.start << ", " << entry.range.size
         << " bytes, station " << entry.station << ", rows";
    for (int row : entry.rows)
        *out << ' ' << row;
}

namespace test {

using plc::test::Random;

namespace {

using Entries = QVector<ScanEntry>;

ScanValue valueAt(int row, quint32 start, quint32 size)
{
    return {row, {1, start, size}, 0, true, 0};
}

ScanEntry entryAt(quint32 start, quint32 size, const QVector<int>& rows)
{
    return {{1, start, size}, 0, rows};
}

DataPoint arrayOf(const char* type, int elements, int stringLength = 0)
{
    DataPoint point;
    point.type = values::findIecType(QString::fromLatin1(type));
    point.elements = elements;
    point.stringLength = stringLength;
    point.area = 1;
    return point;
}

/// Requests that the driver makes of these entries, taken in this order.
int requestsOf(const Entries& entries)
{
    int requests = 0, used = 0, count = 0;
    for (const ScanEntry& entry : entries) {
        const int bytes = int(entry.range.size) + 1;
        if (requests == 0 || used + bytes > 999 || count == 99) {
            ++requests;
            used = count = 0;
        }
        used += bytes;
        ++count;
    }
    return requests;
}

TEST(ScanLayout, NothingTakesNoEntries)
{
    EXPECT_TRUE(layOutScan({}, 200).isEmpty());
}

TEST(ScanLayout, ValueThatARequestCanCarryIsWholeWhateverTheSettingIs)
{
    EXPECT_EQ(layOutScan({valueAt(0, 10, 998)}, 200), Entries{entryAt(10, 998, {0})});
    EXPECT_EQ(layOutScan({valueAt(0, 10, 4)}, 1), Entries{entryAt(10, 4, {0})});
    EXPECT_EQ(layOutScan({valueAt(0, 0, 4), valueAt(1, 4, 4)}, 1),
              (Entries{entryAt(0, 4, {0}), entryAt(4, 4, {1})}));
}

TEST(ScanLayout, NeighboursShareAnEntryUpToTheSetting)
{
    const QVector<ScanValue> values{valueAt(0, 0, 2), valueAt(1, 2, 4), valueAt(2, 6, 2)};
    EXPECT_EQ(layOutScan(values, 8), Entries{entryAt(0, 8, {0, 1, 2})});
    EXPECT_EQ(layOutScan(values, 7), (Entries{entryAt(0, 6, {0, 1}), entryAt(6, 2, {2})}));
    EXPECT_EQ(layOutScan(values, 5),
              (Entries{entryAt(0, 2, {0}), entryAt(2, 4, {1}), entryAt(6, 2, {2})}));
}

TEST(ScanLayout, GapIsReadWhereAnEntryWouldCostMore)
{
    // An entry costs 10 bytes in the request and one in the reply.
    EXPECT_EQ(layOutScan({valueAt(0, 0, 2), valueAt(1, 13, 2)}, 200),
              Entries{entryAt(0, 15, {0, 1})});
    EXPECT_EQ(layOutScan({valueAt(0, 0, 2), valueAt(1, 14, 2)}, 200),
              (Entries{entryAt(0, 2, {0}), entryAt(14, 2, {1})}));
}

TEST(ScanLayout, WiderGapIsReadWhereThatSavesARequest)
{
    // 50 pairs of bytes with 12 bytes between them. As 100 entries they would take two requests,
    // as 50 entries of 14 bytes they take 50 * 15 = 750 of the 999 bytes of one.
    QVector<ScanValue> values;
    for (int pair = 0; pair < 50; ++pair) {
        values.append(valueAt(2 * pair, quint32(300 * pair), 1));
        values.append(valueAt(2 * pair + 1, quint32(300 * pair + 13), 1));
    }
    const Entries entries = layOutScan(values, 200);
    ASSERT_EQ(50, entries.size());
    EXPECT_EQ(entries[49], entryAt(14700, 14, {98, 99}));
}

TEST(ScanLayout, GapIsLeftOutWhereItWouldCostARequest)
{
    // 99 bytes, 12 apart. Joined, a request holds five entries of 193 bytes and one of 25 with
    // 5 * 17 + 3 = 88 of them; each alone, all 99 fit.
    QVector<ScanValue> values;
    for (int i = 0; i < 99; ++i)
        values.append(valueAt(i, quint32(12 * i), 1));
    const Entries entries = layOutScan(values, 200);
    ASSERT_EQ(99, entries.size());
    EXPECT_EQ(1, requestsOf(entries));
}

TEST(ScanLayout, EntryGrowsOnlyAsFarAsItsRequestHasRoom)
{
    // Four entries of 200 bytes use 804 of 999 bytes. The next 200 bytes are two values, of which
    // the first still fits.
    QVector<ScanValue> values;
    for (int i = 0; i < 4; ++i)
        values.append(valueAt(i, quint32(1000 * i), 200));
    values.append(valueAt(4, 8000, 100));
    values.append(valueAt(5, 8100, 100));
    const Entries entries = layOutScan(values, 200);
    ASSERT_EQ(6, entries.size());
    EXPECT_EQ(entries[4], entryAt(8000, 100, {4}));
    EXPECT_EQ(entries[5], entryAt(8100, 100, {5}));
}

TEST(ScanLayout, GapThatMayNotBeReadIsNot)
{
    ScanValue careful = valueAt(1, 2, 2);
    careful.mayBridgeGaps = false;
    // Between 4 and 5 lies a byte of nobody; between 0 and 4 lies none.
    EXPECT_EQ(layOutScan({valueAt(0, 0, 2), careful, valueAt(2, 5, 2), valueAt(3, 8, 2)}, 200),
              (Entries{entryAt(0, 4, {0, 1}), entryAt(5, 5, {2, 3})}));
    careful.range.start = 3;
    EXPECT_EQ(layOutScan({valueAt(0, 0, 2), careful}, 200),
              (Entries{entryAt(0, 2, {0}), entryAt(3, 2, {1})}));
}

TEST(ScanLayout, StationsAndAreasShareNoEntry)
{
    ScanValue elsewhere = valueAt(1, 2, 2);
    elsewhere.station = 7;
    EXPECT_EQ(layOutScan({elsewhere, valueAt(0, 0, 2)}, 200),
              (Entries{entryAt(0, 2, {0}), {{1, 2, 2}, 7, {1}}}));
    elsewhere.station = 0;
    elsewhere.range.area = 2;
    EXPECT_EQ(layOutScan({elsewhere, valueAt(0, 0, 2)}, 200),
              (Entries{entryAt(0, 2, {0}), {{2, 2, 2}, 0, {1}}}));
}

TEST(ScanLayout, EntriesComeInTheOrderOfTheirPlaces)
{
    EXPECT_EQ(layOutScan({valueAt(0, 900, 2), valueAt(1, 0, 2), valueAt(2, 400, 2)}, 200),
              (Entries{entryAt(0, 2, {1}), entryAt(400, 2, {2}), entryAt(900, 2, {0})}));
}

TEST(ScanLayout, OverlappingValuesAreEachWhole)
{
    EXPECT_EQ(layOutScan({valueAt(0, 2, 4), valueAt(1, 0, 4)}, 200),
              Entries{entryAt(0, 6, {1, 0})});
    EXPECT_EQ(layOutScan({valueAt(0, 2, 4), valueAt(1, 0, 4)}, 5),
              (Entries{entryAt(0, 4, {1}), entryAt(2, 4, {0})}));
    // A part of a value, such as an element of an array that is read as a whole too.
    EXPECT_EQ(layOutScan({valueAt(0, 8, 2), valueAt(1, 0, 300), valueAt(2, 0, 2)}, 200),
              Entries{entryAt(0, 300, {1, 2, 0})});
}

struct LongValue {
    const char* type;
    int elements;
    int stringLength;
    int maxReadBytes;
    QVector<quint32> sizes; ///< Of its entries.
};

class LongValues : public ::testing::TestWithParam<LongValue> {};

TEST_P(LongValues, AreCutBetweenTheirElements)
{
    const LongValue& param = GetParam();
    const DataPoint point = arrayOf(param.type, param.elements, param.stringLength);
    const Entries entries =
        layOutScan({scanValue(3, point, param.maxReadBytes)}, param.maxReadBytes);
    ASSERT_EQ(entries.size(), param.sizes.size());
    quint32 start = 0;
    for (int i = 0; i < int(entries.size()); ++i) {
        EXPECT_EQ(entries[i], entryAt(start, param.sizes[i], {3})) << i;
        start += param.sizes[i];
    }
}

// A text of an array begins 255 bytes behind the one before; the bytes end with the last character,
// made even.
INSTANTIATE_TEST_SUITE_P(
    All, LongValues,
    ::testing::Values(
        LongValue{"BYTE", 998, 0, 300, {998}}, LongValue{"BYTE", 999, 0, 300, {300, 300, 300, 99}},
        LongValue{"INT", 499, 0, 200, {998}}, LongValue{"INT", 500, 0, 255, {254, 254, 254, 238}},
        LongValue{"DINT", 250, 0, 255, {252, 252, 252, 244}},
        LongValue{"LREAL", 125, 0, 255, {248, 248, 248, 248, 8}},
        LongValue{"LREAL", 126, 0, 1000, {1000, 8}}, LongValue{"LREAL", 125, 0, 1000, {1000}},
        LongValue{"STRING", 4, 10, 200, {776}},
        LongValue{"STRING", 5, 10, 200, {255, 255, 255, 255, 10}},
        LongValue{"STRING", 5, 11, 509, {255, 255, 255, 255, 12}},
        LongValue{"STRING", 5, 11, 510, {510, 510, 12}},
        LongValue{"WSTRING", 5, 100, 200, {255, 255, 255, 255, 200}}));

TEST(ScanLayout, LongValueSharesNoEntry)
{
    ScanValue large = valueAt(1, 2, 1000);
    large.pieceSize = 400;
    EXPECT_EQ(layOutScan({valueAt(0, 0, 2), large, valueAt(2, 1002, 2)}, 400),
              (Entries{entryAt(0, 2, {0}), entryAt(2, 400, {1}), entryAt(402, 400, {1}),
                       entryAt(802, 200, {1}), entryAt(1002, 2, {2})}));
}

/// Layouts of values at random places, each judged by what it must give, byte by byte.
class RandomLayouts : public ::testing::TestWithParam<std::uint32_t> {
protected:
    ScanValue randomValue(int row, quint32 start)
    {
        const int size = random.oneIn(8) ? random.between(201, 1300) : random.between(1, 16);
        ScanValue value = valueAt(row, start, quint32(size));
        value.pieceSize = quint32(qMin(maxReadBytes, size));
        value.range.area = random.below(2);
        value.station = random.oneIn(10) ? 7 : 0;
        value.mayBridgeGaps = !random.oneIn(10);
        return value;
    }
    QVector<ScanValue> valuesApart()
    {
        QVector<ScanValue> values;
        quint32 place = 0;
        const int count = random.between(1, 200);
        for (int row = 0; row < count; ++row) {
            values.append(randomValue(row, place));
            place = values.last().range.end() +
                    quint32(random.oneIn(2) ? 0 : random.between(0, random.oneIn(9) ? 300 : 20));
        }
        return values;
    }
    bool isLong(const ScanValue& value) const
    {
        return int(value.range.size) > qMax(998, maxReadBytes);
    }

    void checkEntries(const QVector<ScanValue>& values, const Entries& entries)
    {
        std::map<int, int> timesWhole;
        for (const ScanEntry& entry : entries) {
            quint32 limit = quint32(maxReadBytes);
            for (int row : entry.rows) {
                const ScanValue& value = values[row];
                ASSERT_EQ(value.range.area, entry.range.area);
                ASSERT_EQ(value.station, entry.station);
                if (isLong(value))
                    continue;
                limit = qMax(limit, value.range.size);
                ++timesWhole[row];
                EXPECT_GE(value.range.start, entry.range.start) << row;
                EXPECT_LE(value.range.end(), entry.range.end()) << row;
            }
            EXPECT_LE(entry.range.size, limit);
            checkGaps(values, entry);
        }
        for (const ScanValue& value : values)
            EXPECT_EQ(timesWhole[value.row], isLong(value) ? 0 : 1) << value.row;
    }

    /// No byte of nobody is read directly beside a value whose neighbourhood may not be read.
    static void checkGaps(const QVector<ScanValue>& values, const ScanEntry& entry)
    {
        if (entry.rows.size() == 1)
            return;
        std::set<quint32> owned;
        for (int row : entry.rows) {
            for (quint32 at = values[row].range.start; at < values[row].range.end(); ++at)
                owned.insert(at);
        }
        for (int row : entry.rows) {
            const ByteRange& range = values[row].range;
            if (values[row].mayBridgeGaps)
                continue;
            EXPECT_TRUE(range.start <= entry.range.start || owned.count(range.start - 1)) << row;
            EXPECT_TRUE(range.end() >= entry.range.end() || owned.count(range.end())) << row;
        }
    }

    Random random{GetParam()};
    int maxReadBytes = random.oneIn(10) ? 1 : random.between(1, 1200);
};

TEST_P(RandomLayouts, EachByteOfAValueLiesInExactlyOneEntry)
{
    const QVector<ScanValue> values = valuesApart();
    const Entries entries = layOutScan(values, maxReadBytes);
    checkEntries(values, entries);
    for (const ScanValue& value : values) {
        QVector<int> times(int(value.range.size), 0);
        for (const ScanEntry& entry : entries) {
            if (!entry.rows.contains(value.row))
                continue;
            const quint32 first = qMax(entry.range.start, value.range.start);
            for (quint32 at = first; at < qMin(entry.range.end(), value.range.end()); ++at)
                ++times[int(at - value.range.start)];
        }
        EXPECT_EQ(times.count(1), times.size()) << "value " << value.row;
    }
}

TEST_P(RandomLayouts, OverlappingValuesAreEachWholeInOneEntry)
{
    QVector<ScanValue> values;
    for (int row = 0; row < 150; ++row)
        values.append(randomValue(row, quint32(random.between(0, 3000))));
    checkEntries(values, layOutScan(values, maxReadBytes));
}

TEST_P(RandomLayouts, TakeNoMoreRequestsThanAnEntryForEachValue)
{
    const QVector<ScanValue> values = valuesApart();
    Entries alone;
    for (int station : {0, 7}) {
        for (int area : {0, 1}) {
            for (const ScanValue& value : values) {
                const bool isHere = value.station == station && value.range.area == area;
                const quint32 size = isLong(value) ? value.pieceSize : value.range.size;
                for (quint32 done = 0; isHere && done < value.range.size; done += size)
                    alone.append({{area, 0, qMin(size, value.range.size - done)}, station, {}});
            }
        }
    }
    EXPECT_LE(requestsOf(layOutScan(values, maxReadBytes)), requestsOf(alone));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomLayouts,
                         ::testing::Range(std::uint32_t(1), std::uint32_t(31)));

} // namespace
} // namespace test
} // namespace plc::host
