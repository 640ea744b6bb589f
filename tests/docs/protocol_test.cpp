#include <QtCore/QMap>
#include <QtCore/QRegularExpression>

#include "driver/image_access.h"
#include "markdown.h"
#include "support/driver_fixture.h"

using plc::test::allBlocks;
using plc::test::deliver;
using plc::test::DriverTest;
using plc::test::FencedBlock;
using plc::test::logIn;
using plc::test::makeVar;
using plc::test::makeWrite;

namespace {

/// The frame of this name in docs/protocol.md: pairs at the start of each line, then a comment.
QByteArray documentedFrame(const char* name)
{
    const QRegularExpression pairs(QStringLiteral("^((?:[0-9A-F]{2} {1,2})*[0-9A-F]{2})(?: |$)"));
    QByteArray frame;
    for (const FencedBlock& block : allBlocks(QStringLiteral("hex"))) {
        if (block.name != QLatin1String(name))
            continue;
        for (const QString& line : block.lines)
            frame += QByteArray::fromHex(pairs.match(line).captured(1).toLatin1());
    }
    return frame;
}

/// A driver that is logged in to the PLC of the examples.
class ProtocolDocument : public DriverTest {
protected:
    ProtocolDocument() { logIn(0x12, 0x34); }

    QByteArray nextFrame()
    {
        const Protocol* request = ComCommunication();
        return request ? request->frame : QByteArray();
    }
};

RW_VAR bitWrite(int address, char value, int aux1)
{
    RW_VAR write = makeWrite(5, address, QByteArray(1, value), 1, aux1);
    write.dataType = 13;
    return write;
}

} // namespace

TEST(ProtocolExamples, AllStateTheirOwnLength)
{
    const std::vector<FencedBlock> blocks = allBlocks(QStringLiteral("hex"));
    ASSERT_EQ(10u, blocks.size());
    for (const FencedBlock& block : blocks) {
        const QByteArray frame = documentedFrame(block.name.toLatin1().constData());
        ASSERT_GE(frame.size(), 6) << block.name.toStdString();
        EXPECT_EQ(int(frame.size()), 6 + (uchar(frame[4]) << 8 | uchar(frame[5])))
            << block.name.toStdString();
    }
}

TEST_F(DriverTest, DocumentedLoginIsSent)
{
    RW_VAR read = makeVar(3, 10, 2);
    AddListReadVar(&read);
    EXPECT_EQ(ComCommunication()->frame, documentedFrame("login-identification"));
    deliver(plc::test::identificationReply());
    EXPECT_EQ(ComCommunication()->frame, documentedFrame("login-file-request"));
}

TEST_F(ProtocolDocument, DocumentedReadIsSentAndItsReplyStored)
{
    RW_VAR speed = makeVar(3, 10, 2);
    RW_VAR level = makeVar(4, 100, 4, 7);
    AddListReadVar(&speed);
    AddListReadVar(&level);
    EXPECT_EQ(nextFrame(), documentedFrame("read-request"));
    EXPECT_EQ(1, deliver(documentedFrame("read-reply"))->result);
    EXPECT_EQ(6, PLC_driver.localImage.size());
    const int bytes[][3] = {{3, 10, 0x05},  {3, 11, 0xDC},  {4, 100, 0x42},
                            {4, 101, 0xC8}, {4, 102, 0x00}, {4, 103, 0x00}};
    for (const auto& byte : bytes) {
        const quint64 key = plc::DataImage::key(quint32(byte[0]), quint32(byte[1]));
        EXPECT_TRUE(PLC_driver.localImage.contains(key));
        EXPECT_EQ(int(PLC_driver.localImage.value(key)), byte[2]);
    }
}

TEST_F(ProtocolDocument, DocumentedWriteIsSentAndAcknowledged)
{
    RW_VAR write = makeWrite(3, 10, plc::test::hex("04 B0"), 1, 1);
    AddListWriteVar(&write, 0);
    EXPECT_EQ(nextFrame(), documentedFrame("write-request"));
    EXPECT_EQ(1, deliver(documentedFrame("write-reply"))->result);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(ProtocolDocument, DocumentedRefusalIsRefused)
{
    RW_VAR write = makeWrite(3, 10, plc::test::hex("04 B0"), 1, 1);
    AddListWriteVar(&write, 0);
    nextFrame();
    EXPECT_EQ(12, deliver(documentedFrame("refusal"))->result);
}

TEST_F(ProtocolDocument, DocumentedBitWriteIsSent)
{
    RW_VAR on = bitWrite(17, 1, 1);
    RW_VAR off = bitWrite(18, 0, 2);
    AddListWriteVar(&on, 0);
    AddListWriteVar(&off, 0);
    EXPECT_EQ(nextFrame(), documentedFrame("write-bits"));
}

TEST_F(ProtocolDocument, DocumentedMixedWritesAreSent)
{
    RW_VAR word = makeWrite(3, 10, plc::test::hex("04 B0"), 1, 1);
    RW_VAR bit = bitWrite(17, 1, 2);
    AddListWriteVar(&word, 0);
    AddListWriteVar(&bit, 0);
    EXPECT_EQ(nextFrame(), documentedFrame("write-bit-behind-word"));
    deliver(documentedFrame("write-reply"));

    AddListWriteVar(&bit, 0);
    AddListWriteVar(&word, 0);
    EXPECT_EQ(nextFrame(), documentedFrame("write-word-behind-bit"));
}

TEST_F(ProtocolDocument, DocumentedBitPlacesAreThoseOfTheImage)
{
    const QRegularExpression row(
        QStringLiteral("^\\| (\\d+) \\| (\\d+) \\| (\\d+) \\| (\\d+) \\|$"));
    int rows = 0;
    for (const QString& line : plc::test::linesOf(QStringLiteral("docs/protocol.md"))) {
        const QRegularExpressionMatch match = row.match(line);
        if (!match.hasMatch())
            continue;
        ++rows;
        const quint32 area = quint32(1000 + rows);
        RW_VAR bit = makeVar(int(area), match.captured(1).toInt(), 1, 13);
        bit.data = QByteArray(1, '\1');
        WriteDataToLocal(&bit);
        const quint64 key = plc::DataImage::key(area, match.captured(3).toUInt());
        EXPECT_EQ(int(PLC_driver.localImage.value(key)), 1 << match.captured(4).toInt())
            << line.toStdString();
        EXPECT_EQ(match.captured(1).toInt() / 16, match.captured(2).toInt()) << line.toStdString();
    }
    EXPECT_EQ(8, rows);
}

TEST_F(ProtocolDocument, DocumentedBatchesHaveTheirSizes)
{
    struct Batch {
        bool write;
        int length;
        int entries;
    };
    const Batch batches[] = {{false, 1, 99}, {false, 200, 4}, {true, 2, 83}, {true, 500, 1}};
    for (const Batch& batch : batches) {
        for (int i = 0; i < 200; ++i) {
            const QByteArray data(batch.length, '\0');
            RW_VAR var = makeWrite(3, 1000 * i, data, 1, i);
            if (batch.write)
                AddListWriteVar(&var, 1);
            else
                AddListReadVar(&var);
        }
        nextFrame();
        EXPECT_EQ(PLC_driver.batchCount, batch.entries);
        PLC_driver.requestQueue.clear();
        PLC_driver.readList.clear();
        PLC_driver.writeList.clear();
    }
}
