// A stream of bytes that a client sends the simulator: requests that are whole, split, joined,
// damaged or no requests at all.

#include "fuzz_input.h"
#include "guarded_memory.h"
#include "promise.h"
#include "simulator/frame_parser.h"
#include "simulator/plc_services.h"

namespace {

using plc::fuzz::FuzzInput;
using plc::fuzz::GuardedMemory;
using plc::fuzz::require;
using plc::simulator::FrameParser;
using plc::simulator::Status;

constexpr int kMostSteps = 40;
constexpr int kArea = 1;
constexpr int kOtherArea = 7;
constexpr int kAreaSize = 300;

QVector<plc::project::MemoryArea> areas()
{
    return {{kArea, kAreaSize}, {kOtherArea, kAreaSize}};
}

class Client {
public:
    explicit Client(FuzzInput& input) : m_input(input)
    {
        m_session.infoByte24 = 0x12;
        m_session.infoByte25 = 0x34;
    }

    void run()
    {
        QByteArray stream;
        for (int i = 0; i < kMostSteps && !m_input.isAtEnd(); ++i)
            stream += part();
        const QList<QByteArray> frames = framesOf(stream, int(stream.size()));
        require(frames == framesOf(stream, 1 + m_input.byte()),
                "the same frames come out wherever the stream is split");
        for (const QByteArray& frame : frames)
            serve(frame);
    }

private:
    QByteArray part()
    {
        switch (m_input.below(8)) {
            case 0:
                return m_input.bytes(m_input.below(64));
            case 1:
                return QByteArray::fromHex("BBBB0000000E0100000002000000060000000000");
            case 2:
                return QByteArray::fromHex("BBBB000000113100000D") + QByteArray("DOWNLOAD.SDB", 13);
            case 3:
            case 4:
                return request(0x2E);
            case 5:
            case 6:
                return request(0x3C);
            default:
                return damaged(request(m_input.flag() ? 0x2E : 0x3C));
        }
    }

    QByteArray request(int service)
    {
        QByteArray payload(1, char(service));
        payload += '\0';
        const int entries = m_input.below(6);
        payload += bigEndian(quint32(m_input.below(16) == 0 ? m_input.number() : entries), 4);
        for (int i = 0; i < entries; ++i)
            payload += entry(service == 0x3C);
        return frameOf(payload + QByteArray::fromHex("00013412"));
    }

    QByteArray entry(bool isWrite)
    {
        const int shape = m_input.byte();
        const int area = shape & 1 ? kArea : shape & 2 ? kOtherArea : m_input.byte();
        const quint32 address = quint32(shape & 4 ? m_input.number() : m_input.byte());
        const quint32 length = quint32(shape & 8 ? m_input.number() : m_input.below(32));
        QByteArray bytes = bigEndian(quint32(area), 2) + bigEndian(address, 4);
        bytes += bigEndian(length, 4);
        if (isWrite)
            bytes += m_input.bytes(shape & 16    ? m_input.byte()
                                   : length == 0 ? 1
                                                 : int(length & 63));
        return bytes;
    }

    QByteArray damaged(QByteArray frame)
    {
        const int at = m_input.byte() % int(frame.size());
        if (m_input.flag())
            frame[at] = char(m_input.byte());
        else
            frame.truncate(at);
        return frame;
    }

    /// The frames of the stream when it comes in pieces of this size.
    QList<QByteArray> framesOf(const QByteArray& stream, int pieceSize)
    {
        FrameParser parser;
        QList<QByteArray> frames;
        FrameParser::Outcome outcome = FrameParser::Outcome::NeedMore;
        for (int at = 0; at < int(stream.size()); at += pieceSize) {
            parser.append(m_memory.bytes(stream.mid(at, pieceSize)));
            QByteArray frame;
            while ((outcome = parser.take(&frame)) == FrameParser::Outcome::Complete)
                frames.append(frame);
            if (outcome != FrameParser::Outcome::NeedMore)
                break;
        }
        return frames;
    }

    void serve(const QByteArray& frame)
    {
        require(frame.startsWith("\xBB\xBB"), "a frame begins with BB BB");
        require(frame.size() >= 8, "a frame has a service");
        const QByteArray before = contents();
        const QByteArray request = m_memory.bytes(frame);
        const QByteArray reply = m_services.reply(request, &m_session);
        require(reply.size() >= 8 && reply.startsWith("\xBB\xBB"), "a reply is a frame");
        require(frameOf(reply.mid(6)) == reply, "the header of a reply tells its size");
        if (plc::simulator::replyStatus(reply) != Status::Good || quint8(frame[6]) != 0x3C)
            require(contents() == before, "only a good write changes the memory");
    }

    QByteArray contents() const
    {
        return m_plc.read(kArea, 0, kAreaSize) + m_plc.read(kOtherArea, 0, kAreaSize);
    }

    static QByteArray bigEndian(quint32 number, int width)
    {
        QByteArray bytes;
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
            bytes += char(number >> shift & 0xFF);
        return bytes;
    }

    static QByteArray frameOf(const QByteArray& payload)
    {
        return QByteArray::fromHex("BBBB") + bigEndian(quint32(payload.size()), 4) + payload;
    }

    FuzzInput& m_input;
    GuardedMemory m_memory;
    plc::simulator::PlcMemory m_plc{areas()};
    plc::simulator::PlcServices m_services{&m_plc, "fuzz"};
    plc::simulator::Session m_session;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    Client(input).run();
    return 0;
}
