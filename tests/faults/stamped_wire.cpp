#include "faults/stamped_wire.h"

#include <algorithm>

#include "faults/frames.h"

namespace plc::faults {
namespace {

constexpr int kStampedReplyChances = 10;
/// A copy may come this many round trips after the reply that it is a copy of.
constexpr int kFarthestReplay = 12;

constexpr const char* kFaultNames[] = {"delay",
                                       "late",
                                       "lose",
                                       "an earlier reply right before",
                                       "an earlier reply right behind",
                                       "an earlier reply some time later",
                                       "twice in one segment",
                                       "its copy some time later",
                                       "in pieces",
                                       "cut off",
                                       "close",
                                       "rubbish behind"};

/// What a good reply takes; nothing else tells it from other good ones.
int goodReplySize(const QByteArray& request)
{
    if (int(quint8(request.at(kServicePosition))) != kReadService)
        return kSmallestReply;
    const int count = int(bigEndian(request, 8, 4));
    int size = kSmallestReply + 4;
    for (int i = 0; i < count; ++i)
        size += 1 + int(bigEndian(request, 18 + 10 * i, 4));
    return size;
}

} // namespace

enum class StampedWire::Fault {
    None = -1,
    Delay,
    Late,
    Lose,
    EarlierBefore,
    EarlierBehind,
    EarlierLater,
    Twice,
    CopyLater,
    Pieces,
    CutOff,
    Close,
    RubbishBehind,
};

bool StampedWire::strikes(int oneIn)
{
    if (m_faultsLeft == 0 || !m_random->oneIn(oneIn))
        return false;
    --m_faultsLeft;
    return true;
}

void StampedWire::note(const QString& text, qint64 now)
{
    m_history.append(
        QStringLiteral("%1 ms, connection %2: %3").arg(now).arg(m_connection).arg(text));
}

void StampedWire::open(qint64)
{
    m_isOpen = true;
    m_isStalled = false;
    m_connection = m_plc->openConnection();
    m_closesAt = -1;
    m_requests = 0;
    m_taken = 0;
    m_pieces.clear();
    m_frames.clear();
    m_replays.clear();
    m_earlier.clear();
}

void StampedWire::send(const QByteArray& request, qint64 now)
{
    // What was taken belonged to the request before.
    int taken = m_taken;
    while (!m_frames.empty() && taken >= int(m_frames.front().bytes.size())) {
        taken -= int(m_frames.front().bytes.size());
        m_frames.pop_front();
    }
    m_taken = taken;
    m_service = int(quint8(request.at(kServicePosition)));
    const Frame reply{m_plc->answer(request, now), ++m_requests, m_service};
    m_goodSize = goodReplySize(request);
    Fault fault = Fault::None;
    if (strikes(kStampedReplyChances)) {
        fault = Fault(m_random->between(0, int(Fault::RubbishBehind)));
        note(QStringLiteral("reply to request %1 (%2), %3 bytes: %4")
                 .arg(m_requests)
                 .arg(QString::number(m_service, 16))
                 .arg(reply.bytes.size())
                 .arg(QLatin1String(kFaultNames[int(fault)])),
             now);
    }
    deliver(reply, fault, now);
    m_earlier.push_back(reply);
}

void StampedWire::deliver(const Frame& reply, Fault fault, qint64 now)
{
    if (m_isStalled)
        return;
    const qint64 inTime = now + m_turnaround;
    switch (fault) {
        case Fault::Delay:
            push({reply}, now + m_random->between(m_turnaround, m_replyTimeout));
            break;
        case Fault::Late:
            push({reply}, now + m_random->between(m_replyTimeout + 1, 2 * m_replyTimeout));
            break;
        case Fault::Lose:
            break;
        case Fault::EarlierBefore:
            push({earlierReply(reply), reply}, inTime);
            break;
        case Fault::EarlierBehind:
            push({reply, earlierReply(reply)}, inTime);
            break;
        case Fault::EarlierLater:
            push({reply}, inTime);
            replayLater(earlierReply(reply), now);
            break;
        case Fault::Twice:
            push({reply, reply}, inTime);
            break;
        case Fault::CopyLater:
            push({reply}, inTime);
            replayLater(reply, now);
            break;
        case Fault::Pieces:
            push({reply}, inTime, true);
            break;
        case Fault::CutOff:
            pushBytes(reply.bytes.left(m_random->below(int(reply.bytes.size()))), inTime);
            m_isStalled = true;
            break;
        case Fault::Close:
            if (m_random->oneIn(2))
                push({reply}, inTime);
            m_closesAt = m_pieces.empty() ? inTime : qMax(inTime, m_pieces.back().at);
            m_isStalled = true;
            break;
        case Fault::RubbishBehind:
            push({reply}, inTime);
            pushBytes(QByteArray(m_random->between(1, 20), '\x11'), inTime);
            break;
        case Fault::None:
            push({reply}, inTime);
            break;
    }
}

void StampedWire::replayLater(const Frame& frame, qint64 now)
{
    const int delay = m_random->between(0, kFarthestReplay * m_turnaround);
    m_replays.push_back({now + m_turnaround + delay, frame});
}

/// As a rule one that is hard to tell from this one: of its size, or to a write one to a read.
const StampedWire::Frame& StampedWire::earlierReply(const Frame& likeThis)
{
    if (m_earlier.empty())
        return likeThis;
    QVector<int> alike;
    for (int i = 0; i < int(m_earlier.size()); ++i) {
        const Frame& earlier = m_earlier[std::size_t(i)];
        const bool isWrite = likeThis.service == kWriteService;
        if (isWrite ? earlier.service != kWriteService
                    : earlier.bytes.size() == likeThis.bytes.size())
            alike.append(i);
    }
    if (!alike.isEmpty() && !m_random->oneIn(4))
        return m_earlier[std::size_t(alike[m_random->below(int(alike.size()))])];
    return m_earlier[std::size_t(m_random->below(int(m_earlier.size())))];
}

void StampedWire::push(const QVector<Frame>& frames, qint64 at, bool inPieces)
{
    QByteArray bytes;
    for (const Frame& frame : frames) {
        m_frames.push_back(frame);
        bytes += frame.bytes;
    }
    while (inPieces && bytes.size() > 1) {
        const int size = m_random->between(1, int(bytes.size()) - 1);
        pushBytes(bytes.left(size), at);
        bytes.remove(0, size);
        at += m_random->below(3);
    }
    pushBytes(bytes, at);
}

/// A connection keeps the order of its bytes.
void StampedWire::pushBytes(const QByteArray& bytes, qint64 at)
{
    m_pieces.push_back({m_pieces.empty() ? at : qMax(at, m_pieces.back().at), bytes});
}

void StampedWire::startReplays(qint64 now)
{
    if (m_isStalled)
        m_replays.clear();
    for (auto replay = m_replays.begin(); replay != m_replays.end();) {
        if (replay->at > now) {
            ++replay;
            continue;
        }
        note(QStringLiteral("a copy of the reply to request %1 (%2)")
                 .arg(replay->frame.request)
                 .arg(QString::number(replay->frame.service, 16)),
             now);
        pushInFront(replay->frame, now);
        replay = m_replays.erase(replay);
    }
}

/// Overtakes what is on its way, if no frame is in the middle of it.
void StampedWire::pushInFront(const Frame& frame, qint64 now)
{
    int taken = m_taken;
    auto next = m_frames.begin();
    while (next != m_frames.end() && taken >= int(next->bytes.size()))
        taken -= int((next++)->bytes.size());
    if (taken > 0) {
        push({frame}, now);
        return;
    }
    m_frames.insert(next, frame);
    m_pieces.push_front({now, frame.bytes});
}

qint64 StampedWire::nextEvent() const
{
    if (!m_isOpen)
        return -1;
    qint64 next = m_closesAt;
    const auto consider = [&next](qint64 at) { next = next < 0 ? at : qMin(next, at); };
    if (!m_pieces.empty())
        consider(m_pieces.front().at);
    for (const Replay& replay : m_replays)
        consider(replay.at);
    return next;
}

QByteArray StampedWire::take(qint64 now)
{
    if (!m_isOpen)
        return {};
    startReplays(now);
    QByteArray bytes;
    while (!m_pieces.empty() && m_pieces.front().at <= now) {
        bytes += m_pieces.front().bytes;
        m_pieces.pop_front();
    }
    m_taken += int(bytes.size());
    return bytes;
}

bool StampedWire::isClosedByPlc(qint64 now) const
{
    return m_isOpen && m_closesAt >= 0 && m_closesAt <= now && m_pieces.empty();
}

Arrival StampedWire::arrival() const
{
    if (m_frames.empty() || m_taken != int(m_frames.front().bytes.size()))
        return Arrival::Nothing;
    const Frame& frame = m_frames.front();
    if (frame.request == m_requests)
        return Arrival::OwnReply;
    if (m_service != kReadService && m_service != kWriteService)
        return Arrival::LoginCopy;
    const bool isRefusal = bigEndian(frame.bytes, kStatusPosition, 2) != 0;
    const bool isAlike = frame.service == m_service && int(frame.bytes.size()) == m_goodSize;
    return isRefusal || isAlike ? Arrival::SecondCopy : Arrival::OtherReply;
}

} // namespace plc::faults
