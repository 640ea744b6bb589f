// A stream of host calls and replies: requests of all kinds, and replies that are whole, split,
// joined, damaged, too long, too short, empty, late, or not what was asked for.

#include "fuzz_host.h"

namespace {

using plc::fuzz::FuzzHost;
using plc::fuzz::FuzzInput;
using plc::fuzz::GuardedMemory;
using plc::fuzz::require;

constexpr int kMostCalls = 200;
/// Longer than a reply can be; how long variables can get is the matter of fuzz_lists.
constexpr int kLargestLength = 0x11000;

class Conversation {
public:
    explicit Conversation(FuzzInput& input) : m_input(input) {}

    void run()
    {
        m_host.settings.retryLimit = m_input.below(3);
        for (int i = 0; i < kMostCalls && !m_input.isAtEnd(); ++i) {
            step();
            m_host.checkPromises();
        }
    }

private:
    void step()
    {
        switch (m_input.below(16)) {
            case 0:
            case 1:
                ComCommunication();
                break;
            case 2:
            case 3:
                transaction();
                break;
            case 4:
                hand(goodReply());
                break;
            case 5:
                split();
                break;
            case 6:
                hand(goodReply() + goodReply());
                break;
            case 7:
                hand(damaged(goodReply()));
                break;
            case 8:
                otherSizeAfterTheFirst();
                break;
            case 9:
                hand(m_input.bytes(m_input.byte()));
                break;
            case 10:
                hand(QByteArray());
                break;
            case 11:
                lie();
                break;
            case 12:
                queueRead();
                break;
            case 13:
                queueWrite();
                break;
            case 14:
                changeRequest();
                break;
            default:
                changeHost();
                break;
        }
    }

    /// Hands a reply over with an unmapped page behind its last byte.
    const RW_VAR* hand(const QByteArray& reply, int receivedOffset = 0)
    {
        QByteArray bytes = m_memory.bytes(reply);
        const bool wasIdle = PLC_driver.requestQueue.isEmpty();
        const RW_VAR* outcome = DataCom(&bytes, int(bytes.size()) + receivedOffset);
        require(outcome == &PLC_driver.reply, "the reply record is returned");
        require(!wasIdle || outcome->result == 1, "nothing pending is accepted");
        return outcome;
    }

    /// What the PLC would send now.
    QByteArray goodReply()
    {
        if (PLC_driver.requestQueue.isEmpty())
            return QByteArray::fromHex("BBBB000000020000");
        int payload = 2;
        switch (uchar(PLC_driver.requestQueue.first().frame.at(6))) {
            case 0x01:
                payload = 200;
                break;
            case 0x31:
                payload = 30;
                break;
            case 0x2E:
                payload = 6;
                for (int i = 0; i < PLC_driver.batchCount; ++i)
                    payload += 1 + (PLC_driver.batch[i].length & 0xFFFF);
                break;
            default:
                break;
        }
        payload = qMin(payload, 0xFFFF);
        QByteArray reply(6 + payload, char(m_input.byte()));
        reply.replace(0, 8, QByteArray::fromHex("BBBB000000000000"));
        reply[4] = char(uchar(payload >> 8));
        reply[5] = char(uchar(payload & 0xFF));
        return reply;
    }

    void transaction()
    {
        if (!ComCommunication())
            return;
        const QByteArray reply = goodReply();
        hand(reply);
        hand(reply);
    }

    void split()
    {
        const QByteArray reply = goodReply();
        int end = 0;
        while (end < int(reply.size())) {
            end = qMin(int(reply.size()), end + 1 + m_input.number() % 64 * 4);
            end = qMax(end, 1);
            hand(reply.left(end));
            if (m_input.isAtEnd())
                return;
        }
        hand(reply);
    }

    QByteArray damaged(QByteArray reply)
    {
        const int damages = 1 + m_input.below(3);
        for (int i = 0; i < damages && !reply.isEmpty(); ++i) {
            const int at = (m_input.byte() << 8 | m_input.byte()) % int(reply.size());
            switch (m_input.below(5)) {
                case 0:
                    reply[at] = char(m_input.byte());
                    break;
                case 1:
                    reply.truncate(at);
                    break;
                case 2:
                    reply.remove(0, at);
                    break;
                case 3:
                    reply.append(m_input.bytes(m_input.below(32)));
                    break;
                default:
                    reply[at % qMin(8, int(reply.size()))] = char(m_input.byte());
                    break;
            }
        }
        return reply;
    }

    /// The size of a reply is recorded, then something of another size or content comes.
    void otherSizeAfterTheFirst()
    {
        hand(goodReply());
        hand(damaged(goodReply()));
    }

    /// The number of bytes received is not the size of the buffer.
    void lie()
    {
        if (m_input.flag())
            hand(goodReply(), m_input.number() % 1000);
        else
            DataCom(nullptr, m_input.number());
    }

    void queueRead()
    {
        RW_VAR var = m_host.variable(m_input);
        var.length %= kLargestLength;
        if (m_input.flag()) {
            AddListReadVar(&var);
            return;
        }
        AddListOnceReadVar(&var, m_input.below(3));
    }

    void queueWrite()
    {
        RW_VAR var = m_host.variable(m_input);
        var.length %= kLargestLength;
        if (m_input.flag()) {
            AddListWriteVar(&var, m_input.below(3));
            return;
        }
        const int count = m_input.byte();
        SetRegisterData(m_host.label(m_input), 0, QString(), var.station, &var.data, count,
                        var.category, var.aux1);
    }

    /// What the driver hands out is not const.
    void changeRequest()
    {
        Protocol* request = ComCommunication();
        if (!request)
            return;
        switch (m_input.below(4)) {
            case 0:
                request->replyLength = m_input.number();
                break;
            case 1:
                request->dataOffset = m_input.number();
                break;
            case 2:
                request->minReplyLength = m_input.number();
                break;
            default:
                request->var.category = m_input.number();
                break;
        }
    }

    void changeHost()
    {
        switch (m_input.below(4)) {
            case 0:
                EnCommStation(m_input.below(6) - 1, m_input.below(3));
                break;
            case 1: {
                QByteArray value;
                GetRegisterData(m_host.label(m_input), 0, 0, 0, &value, m_input.byte());
                break;
            }
            case 2:
                SetComInfo(m_input.flag() ? &m_host.settings : nullptr);
                break;
            default:
                m_host.changeSettings(m_input);
                break;
        }
    }

    FuzzInput& m_input;
    FuzzHost m_host;
    GuardedMemory m_memory;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    Conversation(input).run();
    return 0;
}
