#include "host/points/value_codec.h"

#include <cmath>
#include <limits>

#include "host/points/value_layout.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

struct TypeRow {
    const char* label;
    const char* value;
    int elements;
    QByteArray wire; ///< In PLC memory, most significant byte first.
    int readCount;   ///< GetRegisterData()
    int writeCount;  ///< SetRegisterData()
};

std::vector<TypeRow> typeTable()
{
    return {
        {"Main.flag", "TRUE", 1, hex("01"), 1, 1},
        {"Main.byte", "16#A5", 1, hex("A5"), 1, 1},
        {"Main.small", "-2", 1, hex("FE"), 1, 1},
        {"Main.usmall", "200", 1, hex("C8"), 1, 1},
        {"Main.speed", "-2", 1, hex("FF FE"), 1, 1},
        {"Main.count", "65534", 1, hex("FF FE"), 1, 1},
        {"Main.word", "16#1234", 1, hex("12 34"), 1, 1},
        {"Main.long", "-2", 1, hex("FF FF FF FE"), 2, 2},
        {"Main.ulong", "4294967294", 1, hex("FF FF FF FE"), 2, 2},
        {"Main.real", "1.5", 1, hex("3F C0 00 00"), 2, 2},
        {"Main.dword", "16#12345678", 1, hex("12 34 56 78"), 2, 2},
        {"Main.time", "T#1m30s", 1, hex("00 01 5F 90"), 2, 2},
        {"Main.lreal", "1.5", 1, hex("3F F8 00 00 00 00 00 00"), 4, 4},
        {"Main.lint", "-2", 1, hex("FF FF FF FF FF FF FF FE"), 4, 4},
        {"Main.ulint", "18446744073709551614", 1, hex("FF FF FF FF FF FF FF FE"), 4, 4},
        {"Main.lword", "16#0123456789ABCDEF", 1, hex("01 23 45 67 89 AB CD EF"), 4, 4},
        // Texts are sent with the zero that ends them, and exactly so many bytes.
        {"Main.text", "'ab'", 1, hex("61 62 00"), 5, 1},
        {"Main.text", "'abc'", 1, hex("61 62 63 00"), 5, 2},
        {"Main.text", "''", 1, hex("00"), 5, 0},
        {"Main.text", "'0123456789'", 1, hex("30 31 32 33 34 35 36 37 38 39 00"), 5, 5},
        {"Main.wide", "\"a\xE2\x82\xAC\"", 1, hex("00 61 20 AC 00 00"), 10, 3},
        {"Main.bytes[0]*3", "[16#01, 16#02, 16#03]", 3, hex("01 02 03"), 3, 3},
        {"Main.table[0,1]*2", "[-1, 2]", 2, hex("FF FF 00 02"), 2, 2},
        {"Big.block[0]*3", "[1, -1, 3]", 3, hex("00 00 00 01 FF FF FF FF 00 00 00 03"), 6, 6},
    };
}

class ValueCodecTest : public HostTest {
protected:
    ValueCodecTest() { connect(); }

    QVector<values::Value> parsed(const DataPoint& target, const char* text)
    {
        const Expected<QVector<values::Value>> values = parsePoint(target, QString::fromUtf8(text));
        EXPECT_TRUE(values) << values.error().text.toStdString();
        return values.valueOr(QVector<values::Value>());
    }
    /// Reads the value out of a memory that goes on with `filler` behind it.
    void readFrom(const TypeRow& row, char filler)
    {
        readOnce(row.label);
        if (reads.empty())
            logIn();
        const QByteArray frame = request();
        const RequestContent content = parseRequest(frame);
        ASSERT_EQ(1, content.entries.size()) << row.label;
        const int length = int(content.entries[0].length);
        answer(readReply({(row.wire + QByteArray(length, filler)).left(length)}));
    }
    QString complaint(const char* label, const char* text)
    {
        const Expected<QVector<values::Value>> values =
            parsePoint(point(label), QString::fromUtf8(text));
        EXPECT_FALSE(values);
        return values ? QString() : values.error().text;
    }
};

TEST_F(ValueCodecTest, CountsAreInTheUnitsOfTheEntryPoint)
{
    for (const TypeRow& row : typeTable()) {
        const DataPoint target = point(row.label);
        EXPECT_EQ(target.elements, row.elements) << row.label;
        const WriteBuffer buffer = *encodeValues(target, parsed(target, row.value));
        EXPECT_EQ(buffer.count, row.writeCount) << row.label;
        EXPECT_EQ(buffer.wireBytes, row.wire.size()) << row.label;
    }
}

TEST_F(ValueCodecTest, EveryTypeGoesToThePlcMostSignificantByteFirst)
{
    bool isFirst = true;
    const std::vector<TypeRow> rows = typeTable();
    for (const TypeRow& row : rows) {
        write(row.label, row.value);
        if (isFirst)
            logIn();
        isFirst = false;
        const QByteArray frame = request();
        const RequestContent content = parseRequest(frame);
        ASSERT_EQ(1, content.entries.size()) << row.label;
        EXPECT_EQ(content.entries[0].address, quint32(point(row.label).address)) << row.label;
        EXPECT_EQ(row.wire, writtenBytes(frame, content.entries[0])) << row.label;
        answer(writeReply());
        if (!writes.empty() && writes.size() < size_t(1 + (&row - rows.data())))
            answerWithZeros();
    }
    EXPECT_EQ(writes.size(), typeTable().size());
}

TEST_F(ValueCodecTest, EveryTypeIsReadAsItWasWritten)
{
    for (const TypeRow& row : typeTable()) {
        const DataPoint target = point(row.label);
        readFrom(row, '\0');
        ASSERT_FALSE(reads.empty());
        EXPECT_EQ(QString::fromUtf8(row.value),
                  pointText(target, decodeValues(target, reads.back().bytes)))
            << row.label;
    }
    EXPECT_EQ(typeTable().size(), reads.size());
}

/// The library converts a value from its image, the host from the reply: both must say the same.
TEST_F(ValueCodecTest, ValueOfAReplyIsWhatTheDriverGives)
{
    std::vector<TypeRow> rows = typeTable();
    rows.push_back({"Io.lamp[0]*20", "", 20, hex("80 01 0A"), 20, 0});
    for (const TypeRow& row : rows) {
        readFrom(row, '\x5A');
        ASSERT_FALSE(reads.empty());
        QByteArray given;
        builtDriver().getRegisterData(point(row.label).label, 0, 0, 0, &given, row.readCount);
        EXPECT_EQ(given, reads.back().bytes) << row.label;
    }
    EXPECT_EQ(rows.size(), reads.size());
}

TEST_F(ValueCodecTest, BitsHaveAByteEachInTheHostAndWordsInThePlc)
{
    const DataPoint target = point("Io.lamp[0]*20");
    // Bits 32 to 51 lie in the words at 2 and 3, which share byte 3.
    EXPECT_EQ(2u, valueBytes(target).start);
    EXPECT_EQ(3u, valueBytes(target).size);
    const QVector<FrameEntry> pieces = oneShotPieces(target, 200);
    ASSERT_EQ(1, pieces.size());
    EXPECT_EQ(2u, pieces[0].address);
    EXPECT_EQ(3u, pieces[0].length);
}

TEST_F(ValueCodecTest, TextsAreReadWithoutTouchingWhatLiesBehindThem)
{
    // 10 characters and their zero take 11 bytes, from 64 to 74; registers would take a twelfth.
    EXPECT_EQ(64u, valueBytes(point("Main.text")).start);
    EXPECT_EQ(10u, valueBytes(point("Main.text")).size);
    // The elements of an array lie 255 bytes apart: 255 and 11 bytes are 133 registers.
    EXPECT_EQ(266u, valueBytes(point("Big.texts[0]*2")).size);
}

TEST_F(ValueCodecTest, TextWithoutAZeroEndsWithItsCapacity)
{
    const DataPoint target = point("Main.text");
    EXPECT_EQ("'0123456789'", pointText(target, decodeValues(target, "0123456789")));
    EXPECT_EQ("'0123'", pointText(target, decodeValues(target, "0123")));
    EXPECT_EQ("'01'", pointText(target, decodeValues(target, QByteArray("01\0"
                                                                        "2345678",
                                                                        10))));
}

TEST_F(ValueCodecTest, ArrayOfTextsIsReadWhole)
{
    readOnce("Big.texts[1]*2");
    logIn();
    const QVector<FrameEntry> entries = parseRequest(request()).entries;
    ASSERT_EQ(1, entries.size());
    QByteArray memory(266, '\0');
    memory.replace(0, 3, "one");
    memory.replace(255, 3, "two");
    answer(readReply({memory}));
    ASSERT_EQ(1u, reads.size());
    const DataPoint target = point("Big.texts[1]*2");
    EXPECT_EQ("['one', 'two']", pointText(target, decodeValues(target, reads[0].bytes)));
    EXPECT_EQ("[\"one\", \"two\"]", pointJson(target, decodeValues(target, reads[0].bytes)));
}

TEST_F(ValueCodecTest, SeveralValuesStandBetweenCommas)
{
    const DataPoint target = point("Main.bytes[0]*3");
    EXPECT_EQ("[16#01, 16#02, 16#03]", pointText(target, parsed(target, "1,2,3")));
    EXPECT_EQ("[16#01, 16#02, 16#03]", pointText(target, parsed(target, " [ 1 , 2 , 3 ] ")));
    EXPECT_EQ("[1, 2, 3]", pointJson(target, parsed(target, "1,2,3")));
}

TEST_F(ValueCodecTest, WrongValuesAreNamedWithTheirLabel)
{
    EXPECT_EQ("Main.bytes[0]*3: 3 values are expected, separated by commas, not 2",
              complaint("Main.bytes[0]*3", "1,2"));
    EXPECT_EQ("Main.bytes[0]*3: 256 is outside the range of BYTE, 16#0 to 16#FF",
              complaint("Main.bytes[0]*3", "1,256,3"));
    EXPECT_EQ("Main.speed: \"fast\" is no whole number, which INT takes",
              complaint("Main.speed", "fast"));
    EXPECT_EQ("Big.texts[0]*2: texts are written one by one, each by its own label",
              complaint("Big.texts[0]*2", "a,b"));
}

TEST_F(ValueCodecTest, ShortBuffersReadAsZeros)
{
    EXPECT_EQ("1", pointText(point("Main.long"), decodeValues(point("Main.long"), hex("01"))));
    EXPECT_EQ("FALSE",
              pointText(point("Main.flag"), decodeValues(point("Main.flag"), QByteArray())));
}

TEST_F(ValueCodecTest, OneElementIsThatOfItsIndex)
{
    const DataPoint table = point("Main.table[0,1]*2");
    EXPECT_EQ(values::Value(qint64(-2)), decodeValue(table, hex("FE FF 05 00")));
    EXPECT_EQ(values::Value(qint64(5)), decodeValue(table, hex("FE FF 05 00"), 1));
    EXPECT_EQ(values::Value(qint64(0)), decodeValue(table, hex("FE FF"), 1));
    QByteArray texts = QByteArray("one").leftJustified(255, '\0') + "two";
    EXPECT_EQ(values::Value(QStringLiteral("two")), decodeValue(point("Big.texts[0]*2"), texts, 1));
}

TEST_F(ValueCodecTest, NotANumberKeepsItsBits)
{
    const DataPoint target = point("Main.real");
    const QVector<values::Value> values = decodeValues(target, hex("01 00 C0 7F"));
    EXPECT_TRUE(std::isnan(std::get<float>(values[0])));
    EXPECT_EQ(encodeValues(target, values)->bytes, hex("01 00 C0 7F"));
}

} // namespace
} // namespace test
} // namespace plc::host
