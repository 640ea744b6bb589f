#include "simulator/plc_services.h"

#include "simulator/big_endian.h"
#include "simulator/request_entries.h"

namespace plc::simulator {
namespace {

const QByteArray kIdentificationParameters = QByteArray::fromHex("000002000000060000000000");
const QByteArray kSymbolFileName("DOWNLOAD.SDB");
constexpr int kFileNamePosition = 10;

// Clients take shorter login replies for a refusal.
constexpr int kIdentificationReplyPayload = 200;
constexpr int kFileReplyPayload = 30;
constexpr int kInfoPosition24 = 24;
constexpr int kInfoPosition25 = 25;

constexpr int kReplyStatusPosition = 6;
constexpr int kReplyStatusSize = 2;
constexpr int kEntryCountSize = 4;
/// Stands before each block of a read reply.
constexpr char kBlockStart = 0;

QByteArray frameReply(Status status, const QByteArray& data)
{
    QByteArray reply(2, char(kFrameMark));
    appendBigEndian(&reply, kReplyStatusSize + quint64(data.size()), 4);
    appendBigEndian(&reply, quint64(status), kReplyStatusSize);
    return reply + data;
}

/// A good reply of `payload` bytes behind the length field, its first data bytes being `data`.
QByteArray loginReply(int payload, const QByteArray& data)
{
    const int room = payload - kReplyStatusSize;
    return frameReply(Status::Good, data.left(room).leftJustified(room, '\0'));
}

Status checkRange(const PlcMemory& memory, int area, quint32 address, quint64 length)
{
    if (!memory.hasArea(area))
        return Status::UnknownArea;
    return memory.contains(area, address, length) ? Status::Good : Status::OutsideArea;
}

Status checkWrite(const PlcMemory& memory, const WriteEntry& entry)
{
    if (!entry.isBit)
        return checkRange(memory, entry.area, entry.address, quint64(entry.data.size()));
    if (!memory.hasArea(entry.area))
        return Status::UnknownArea;
    return memory.containsBit(entry.area, entry.address) ? Status::Good : Status::OutsideArea;
}

} // namespace

QByteArray PlcServices::statusReply(Status status)
{
    return frameReply(status, QByteArray());
}

QByteArray PlcServices::reply(const QByteArray& request, Session* session)
{
    if (request[kServicePosition + 1] != 0)
        return statusReply(Status::BadParameter);
    switch (Service(quint8(request[kServicePosition]))) {
        case Service::Identification:
            return identify(request, session);
        case Service::FileRequest:
            return requestFile(request, session);
        case Service::ReadVariables:
            return readVariables(request, *session);
        case Service::WriteVariables:
            return writeVariables(request, *session);
    }
    return statusReply(Status::UnknownService);
}

QByteArray PlcServices::identify(const QByteArray& request, Session* session) const
{
    session->login = Session::Login::None;
    const QByteArray parameters = request.mid(kRequestDataPosition);
    if (parameters.size() < kIdentificationParameters.size())
        return statusReply(Status::BadLength);
    if (parameters.size() > kIdentificationParameters.size())
        return statusReply(Status::TrailingBytes);
    if (parameters != kIdentificationParameters)
        return statusReply(Status::BadParameter);
    if (m_loginRefused)
        return statusReply(Status::LoginRefused);
    session->login = Session::Login::Identified;
    return loginReply(kIdentificationReplyPayload, m_name);
}

QByteArray PlcServices::requestFile(const QByteArray& request, Session* session) const
{
    if (session->login == Session::Login::None)
        return statusReply(Status::NotLoggedIn);
    session->login = Session::Login::Identified;
    if (request.size() < kFileNamePosition)
        return statusReply(Status::BadLength);
    const int nameSize = int(bigEndianAt(request, kRequestDataPosition, 2));
    const QByteArray name = request.mid(kFileNamePosition);
    if (name.size() < nameSize)
        return statusReply(Status::BadLength);
    if (name.size() > nameSize)
        return statusReply(Status::TrailingBytes);
    if (name != kSymbolFileName + '\0')
        return statusReply(Status::NoSuchFile);
    session->login = Session::Login::Done;
    QByteArray reply = loginReply(kFileReplyPayload, QByteArray());
    reply[kInfoPosition24] = char(session->infoByte24);
    reply[kInfoPosition25] = char(session->infoByte25);
    return reply;
}

QByteArray PlcServices::readVariables(const QByteArray& request, const Session& session) const
{
    QVector<ReadEntry> entries;
    const Status form = parseReadRequest(request, session, &entries);
    if (form != Status::Good)
        return statusReply(form);
    quint64 payload = kReplyStatusSize + kEntryCountSize;
    for (const ReadEntry& entry : entries) {
        payload += 1 + quint64(entry.length);
        if (payload > kLargestPayload)
            return statusReply(Status::ReplyTooLarge);
        const Status place = checkRange(*m_memory, entry.area, entry.address, entry.length);
        if (place != Status::Good)
            return statusReply(place);
    }
    QByteArray data;
    appendBigEndian(&data, quint64(entries.size()), kEntryCountSize);
    for (const ReadEntry& entry : entries) {
        data += kBlockStart;
        data += m_memory->read(entry.area, entry.address, int(entry.length));
    }
    return frameReply(Status::Good, data);
}

QByteArray PlcServices::writeVariables(const QByteArray& request, const Session& session)
{
    QVector<WriteEntry> entries;
    const Status form = parseWriteRequest(request, session, &entries);
    if (form != Status::Good)
        return statusReply(form);
    if (m_writesRefused)
        return statusReply(Status::WriteRefused);
    // All are checked before the first is stored: a refused request changes nothing.
    for (const WriteEntry& entry : entries) {
        const Status place = checkWrite(*m_memory, entry);
        if (place != Status::Good)
            return statusReply(place);
    }
    for (const WriteEntry& entry : entries) {
        if (entry.isBit)
            m_memory->writeBit(entry.area, entry.address, entry.data[0] != 0);
        else
            m_memory->write(entry.area, entry.address, entry.data);
    }
    return statusReply(Status::Good);
}

Status replyStatus(const QByteArray& reply)
{
    return Status(quint16(bigEndianAt(reply, kReplyStatusPosition, kReplyStatusSize)));
}

} // namespace plc::simulator
