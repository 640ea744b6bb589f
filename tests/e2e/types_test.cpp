// Every type over the wire: the bytes in the PLC's memory and the text that a user sees.

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

constexpr char kTypesProject[] = R"({
  'name': 'Types',
  'areas': [{'index': 0, 'size': 64}, {'index': 3, 'size': 4096}],
  'structures': [
    {'name': 'Step', 'size': 8, 'members': [
      {'name': 'target', 'type': 'REAL', 'offset': 0},
      {'name': 'count', 'type': 'UINT', 'offset': 4},
      {'name': 'marks', 'type': 'BYTE', 'offset': 6, 'array': [[1, 2]]}]},
    {'name': 'Recipe', 'size': 40, 'members': [
      {'name': 'id', 'type': 'DINT', 'offset': 0},
      {'name': 'step', 'type': 'Step', 'offset': 8, 'array': [[1, 4]]}]}],
  'scopes': [{'name': 'T', 'variables': [
    {'name': 'bool', 'type': 'BOOL', 'area': 3, 'offset': 0},
    {'name': 'byte', 'type': 'BYTE', 'area': 3, 'offset': 1},
    {'name': 'sint', 'type': 'SINT', 'area': 3, 'offset': 2},
    {'name': 'usint', 'type': 'USINT', 'area': 3, 'offset': 3},
    {'name': 'int', 'type': 'INT', 'area': 3, 'offset': 4},
    {'name': 'uint', 'type': 'UINT', 'area': 3, 'offset': 6},
    {'name': 'word', 'type': 'WORD', 'area': 3, 'offset': 8},
    {'name': 'dint', 'type': 'DINT', 'area': 3, 'offset': 12},
    {'name': 'udint', 'type': 'UDINT', 'area': 3, 'offset': 16},
    {'name': 'real', 'type': 'REAL', 'area': 3, 'offset': 20},
    {'name': 'dword', 'type': 'DWORD', 'area': 3, 'offset': 24},
    {'name': 'time', 'type': 'TIME', 'area': 3, 'offset': 28},
    {'name': 'lreal', 'type': 'LREAL', 'area': 3, 'offset': 32},
    {'name': 'lint', 'type': 'LINT', 'area': 3, 'offset': 40},
    {'name': 'ulint', 'type': 'ULINT', 'area': 3, 'offset': 48},
    {'name': 'lword', 'type': 'LWORD', 'area': 3, 'offset': 56},
    {'name': 'string', 'type': 'STRING', 'length': 11, 'area': 3, 'offset': 64},
    {'name': 'wstring', 'type': 'WSTRING', 'length': 5, 'area': 3, 'offset': 80},
    {'name': 'table', 'type': 'INT', 'area': 3, 'offset': 100, 'array': [[0, 2], [1, 3]]},
    {'name': 'recipe', 'type': 'Recipe', 'area': 3, 'offset': 200, 'array': [[1, 3]]},
    {'name': 'names', 'type': 'STRING', 'length': 20, 'area': 3, 'offset': 400, 'array': [[1, 2]]},
    {'name': 'curve', 'type': 'INT', 'area': 3, 'offset': 1000, 'array': [[0, 1199]]},
    {'name': 'lamp', 'type': 'BIT', 'area': 0, 'offset': 35},
    {'name': 'row', 'type': 'BIT', 'area': 0, 'offset': 64, 'array': [[0, 15]]},
    {'name': 'beside', 'type': 'INT', 'area': 0, 'offset': 20}]}]
})";

class Types : public Plant {
protected:
    Types()
    {
        writeProject(kTypesProject);
        startSimulator();
    }
};

struct Case {
    const char* variable;
    int address;
    const char* bytes; ///< In PLC memory.
    const char* text;
};

void PrintTo(const Case& value, std::ostream* out)
{
    *out << value.variable << " " << value.text;
}

class EveryType : public Types, public testing::WithParamInterface<Case> {
protected:
    int size() const { return int(QByteArray(GetParam().bytes).count(' ')) + 1; }
    QString label() const { return QStringLiteral("T.") + QLatin1String(GetParam().variable); }
};

TEST_P(EveryType, IsReadFromItsBytes)
{
    poke(3, GetParam().address, QByteArray(GetParam().bytes).replace(' ', "").constData());
    EXPECT_EQ(GetParam().text, readText(label()));
}

TEST_P(EveryType, IsWrittenAsItsBytesAndNothingBeside)
{
    const int before = GetParam().address - 1;
    if (before >= 0)
        poke(3, before, "A5");
    poke(3, GetParam().address + size(), "5A");
    write({label() + QLatin1Char('=') + QLatin1String(GetParam().text)});
    EXPECT_EQ(GetParam().bytes, peek(3, GetParam().address, size()));
    if (before >= 0) {
        EXPECT_EQ("a5", peek(3, before, 1));
    }
    EXPECT_EQ("5a", peek(3, GetParam().address + size(), 1));
}

INSTANTIATE_TEST_SUITE_P(
    All, EveryType,
    testing::Values(Case{"bool", 0, "01", "TRUE"}, Case{"bool", 0, "00", "FALSE"},
                    Case{"byte", 1, "fe", "16#FE"}, Case{"sint", 2, "80", "-128"},
                    Case{"usint", 3, "ff", "255"}, Case{"int", 4, "ff fe", "-2"},
                    Case{"int", 4, "12 34", "4660"}, Case{"uint", 6, "ff fe", "65534"},
                    Case{"word", 8, "0b ad", "16#0BAD"}, Case{"dint", 12, "ff ff ff fd", "-3"},
                    Case{"dint", 12, "01 02 03 04", "16909060"},
                    Case{"udint", 16, "ff ff ff fd", "4294967293"},
                    // 1.5 = 1.1b: sign 0, exponent 127, fraction 1000...
                    Case{"real", 20, "3f c0 00 00", "1.5"},
                    // -0.1, the nearest: exponent 123, fraction 0x4CCCCD
                    Case{"real", 20, "bd cc cc cd", "-0.1"},
                    Case{"dword", 24, "de ad be ef", "16#DEADBEEF"},
                    // 90,061,001 ms = 0x055E38C9 = 1 d 1 h 1 min 1 s 1 ms
                    Case{"time", 28, "05 5e 38 c9", "T#1d1h1m1s1ms"},
                    // -2.5 = -1.01b x 2: exponent 1024, fraction 0100...
                    Case{"lreal", 32, "c0 04 00 00 00 00 00 00", "-2.5"},
                    Case{"lint", 40, "80 00 00 00 00 00 00 00", "-9223372036854775808"},
                    Case{"ulint", 48, "ff ff ff ff ff ff ff ff", "18446744073709551615"},
                    Case{"lword", 56, "01 23 45 67 89 ab cd ef", "16#0123456789ABCDEF"}));

TEST_F(Types, StringIsReadUpToItsZero)
{
    poke(3, 64, "4D696C6B00FFFFFFFFFFFFFF");
    EXPECT_EQ("'Milk'", readText(QStringLiteral("T.string")));
}

TEST_F(Types, StringIsWrittenWithItsZeroAndNothingBehindIt)
{
    poke(3, 76, "77");
    write({QStringLiteral("T.string='Whole milk'")});
    EXPECT_EQ("57 68 6f 6c 65 20 6d 69 6c 6b 00 00 77", peek(3, 64, 13));
    EXPECT_EQ("'Whole milk'", readText(QStringLiteral("T.string")));
}

TEST_F(Types, WideStringHasTwoBytesACharacterMostSignificantFirst)
{
    poke(3, 80, "004D00FC20AC0000");
    EXPECT_EQ("\"M\u00fc\u20ac\"", readText(QStringLiteral("T.wstring")));
    write({QStringLiteral("T.wstring=a\u20ac")});
    EXPECT_EQ("00 61 20 ac 00 00", peek(3, 80, 6));
}

TEST_F(Types, ElementsOfAStringArrayLie255BytesApart)
{
    poke(3, 400, "4100");
    poke(3, 655, "4200");
    const Outcome outcome =
        run("read", {QStringLiteral("T.names[1]"), QStringLiteral("T.names[2]")});
    EXPECT_EQ((QStringList{QStringLiteral("T.names[1] = 'A'"), QStringLiteral("T.names[2] = 'B'")}),
              outcome.lines);
}

TEST_F(Types, ElementsOfATwoDimensionalArrayLieRowByRow)
{
    // [1,2] is the element 1 x 3 + (2 - 1) = 4, at 100 + 4 x 2
    poke(3, 108, "0007");
    EXPECT_EQ("7", readText(QStringLiteral("T.table[1,2]")));
    // [2,3], the last, is the element 2 x 3 + 2 = 8, at 116
    write({QStringLiteral("T.table[2,3]=-1")});
    EXPECT_EQ("00 07 00 00 00 00 00 00 ff ff 00 00", peek(3, 108, 12));
}

TEST_F(Types, MembersOfAnArrayOfStructuresAreFoundAtTheirOffsets)
{
    // recipe[2] at 200 + 40, step[3] at 8 + 2 x 8 in it: 264
    poke(3, 264, "3FC00000000700AB");
    const Outcome outcome = run("read", {QStringLiteral("T.recipe[2].step[3].target"),
                                         QStringLiteral("T.recipe[2].step[3].count"),
                                         QStringLiteral("T.recipe[2].step[3].marks[2]")});
    EXPECT_EQ((QStringList{QStringLiteral("T.recipe[2].step[3].target = 1.5"),
                           QStringLiteral("T.recipe[2].step[3].count = 7"),
                           QStringLiteral("T.recipe[2].step[3].marks[2] = 16#AB")}),
              outcome.lines);
    write({QStringLiteral("T.recipe[3].id=66051")});
    EXPECT_EQ("00 01 02 03", peek(3, 280, 4));
}

TEST_F(Types, BitIsReadFromItsWord)
{
    // bit 35: the word at byte 2, bit 3, in its low byte at 3
    poke(0, 2, "0008");
    EXPECT_EQ("TRUE", readText(QStringLiteral("T.lamp")));
    poke(0, 2, "FFF7");
    EXPECT_EQ("FALSE", readText(QStringLiteral("T.lamp")));
}

TEST_F(Types, BitIsWrittenAndItsNeighboursAreNot)
{
    poke(0, 2, "A5F0");
    write({QStringLiteral("T.lamp=TRUE")});
    EXPECT_EQ("a5 f8", peek(0, 2, 2));
    write({QStringLiteral("T.lamp=FALSE")});
    EXPECT_EQ("a5 f0", peek(0, 2, 2));
}

TEST_F(Types, ARowOfBitsIsWrittenBitByBit)
{
    // bits 64 to 79: the word at byte 4; row[0] is its lowest bit
    write({QStringLiteral("T.row[0]*16=1,0,0,0,0,0,0,1,1,0,1,0,0,0,0,1")});
    EXPECT_EQ("85 81", peek(0, 4, 2));
    EXPECT_EQ("TRUE", readText(QStringLiteral("T.row[15]")));
}

TEST_F(Types, BitsAndWordsWrittenInOneCommandDoNotDisturbEachOther)
{
    poke(0, 0, "1111000022220000");
    write({QStringLiteral("T.lamp=1"), QStringLiteral("T.beside=4660"),
           QStringLiteral("T.row[1]=1"), QStringLiteral("T.int=-1"), QStringLiteral("T.row[2]=1")});
    EXPECT_EQ("11 11 00 08 22 26 00 00", peek(0, 0, 8));
    EXPECT_EQ("12 34", peek(0, 20, 2));
    EXPECT_EQ("ff ff", peek(3, 4, 2));
}

TEST_F(Types, AValueOfSeveralRequestsIsWrittenAndReadWhole)
{
    // 1,200 elements of two bytes: more than one write request carries, in pieces of 1,000 bytes
    QStringList values;
    for (int i = 0; i < 1200; ++i)
        values.append(QString::number(i * 3));
    const QString text = values.join(QStringLiteral(", "));
    write({QStringLiteral("T.curve[0]*1200=") + text});
    EXPECT_EQ("00 00 00 03 00 06", peek(3, 1000, 6));
    // 499 x 3 = 0x05D9, 500 x 3 = 0x05DC: the seam of the first two pieces
    EXPECT_EQ("05 d9 05 dc", peek(3, 1998, 4));
    // 1199 x 3 = 0x0E0D
    EXPECT_EQ("0e 0d 00", peek(3, 3398, 3));
    const Outcome outcome =
        run("read", {QStringLiteral("T.curve[0]*1200"), QStringLiteral("--json")});
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_TRUE(
        outcome.lines.value(0).contains(QStringLiteral("\"value\":[") + text + QStringLiteral("]")))
        << outcome.lines.value(0).left(300).toStdString();
}

} // namespace
} // namespace plc::test
