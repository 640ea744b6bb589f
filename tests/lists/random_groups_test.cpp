#include "tests/lists/folding_fixture.h"

namespace plc {
namespace test {
namespace {

using RandomGroups = DriverTest;

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
