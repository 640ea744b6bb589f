#include "faults/fault_plan.h"

#include "faults/frames.h"

namespace plc::faults {
namespace {

constexpr int kConnectionChances = 4;
constexpr int kRequestChances = 8;
constexpr int kReplyChances = 3;

} // namespace

bool FaultPlan::strikes(int oneIn)
{
    if (m_left == 0 || !m_random->oneIn(oneIn))
        return false;
    --m_left;
    return true;
}

ConnectionFault FaultPlan::connectionFault()
{
    if (!strikes(kConnectionChances))
        return ConnectionFault::None;
    return ConnectionFault(m_random->between(1, int(ConnectionFault::Deafness)));
}

RequestFault FaultPlan::requestFault()
{
    if (!strikes(kRequestChances))
        return RequestFault::None;
    return RequestFault(m_random->between(1, int(RequestFault::SlowBytes)));
}

ReplyFault FaultPlan::replyFault(bool isAcknowledgement)
{
    if (!strikes(kReplyChances))
        return ReplyFault::None;
    const ReplyFault fault = ReplyFault(m_random->between(1, int(ReplyFault::RubbishBehind)));
    // Nothing tells the second copy of an acknowledgement from the answer to the next write.
    if (isAcknowledgement && fault == ReplyFault::TwiceApart)
        return ReplyFault::Twice;
    return fault;
}

QByteArray FaultPlan::damaged(RequestFault fault, QByteArray request)
{
    if (fault == RequestFault::WrongMark)
        request[m_random->below(2)] = char(m_random->below(0xBB));
    else if (fault == RequestFault::WrongLength)
        request = withOtherLength(request);
    return request;
}

QByteArray FaultPlan::damaged(ReplyFault fault, QByteArray reply)
{
    const int size = int(reply.size());
    switch (fault) {
        case ReplyFault::WrongMark:
            reply[m_random->below(2)] = char(m_random->below(0xBB));
            return reply;
        case ReplyFault::WrongLength:
            return withOtherLength(reply);
        case ReplyFault::WrongStatus:
            // Never 0: a refusal that was made a success could not be told from one.
            reply[kStatusPosition + m_random->below(2)] = char(m_random->between(1, 255));
            return reply;
        case ReplyFault::WrongData:
            if (size > kSmallestReply)
                reply[m_random->between(kSmallestReply, size - 1)] = char(m_random->below(256));
            return reply;
        case ReplyFault::OnlyStatus:
            return frameOf(QByteArray(1, '\0') + char(m_random->between(1, 255)));
        case ReplyFault::Longer:
            return frameOf(reply.mid(kHeaderSize) + QByteArray(m_random->between(1, 9), '\x55'));
        case ReplyFault::Shorter:
            return frameOf(reply.mid(kHeaderSize, m_random->below(size - kHeaderSize)));
        case ReplyFault::HalfAndSilence:
        case ReplyFault::HalfAndClose:
        case ReplyFault::HalfAndReset:
            return reply.left(m_random->below(size));
        case ReplyFault::RubbishBefore:
            return rubbish() + reply;
        case ReplyFault::RubbishBehind:
            return reply + rubbish();
        case ReplyFault::Twice:
            return reply + reply;
        default:
            return reply;
    }
}

QByteArray FaultPlan::rubbish()
{
    QByteArray bytes(m_random->between(1, 40), '\0');
    for (char& byte : bytes)
        byte = char(m_random->below(256));
    return bytes;
}

QByteArray FaultPlan::withOtherLength(QByteArray frame)
{
    const int told = int(frame.size()) - kHeaderSize;
    int length = m_random->oneIn(2) ? m_random->below(2 * told + 1) : m_random->below(0x10000);
    if (length == told)
        length = told + 1;
    frame[kLengthPosition] = char(length >> 8);
    frame[kLengthPosition + 1] = char(length & 0xFF);
    return frame;
}

} // namespace plc::faults
