#include "simulator/request_entries.h"

#include "simulator/big_endian.h"
#include "simulator/plc_services.h"

namespace plc::simulator {
namespace {

constexpr int kTrailerSize = 4;
constexpr char kTrailerStart[2] = {0x00, 0x01};

/// Walks through a request; nothing is read behind its end.
class RequestCursor {
public:
    explicit RequestCursor(const QByteArray& request)
        : m_request(request), m_position(kRequestDataPosition)
    {
    }

    int remaining() const { return int(m_request.size()) - m_position; }

    bool number(int width, quint32* value)
    {
        if (remaining() < width)
            return false;
        *value = quint32(bigEndianAt(m_request, m_position, width));
        m_position += width;
        return true;
    }

    bool bytes(quint32 count, QByteArray* value)
    {
        if (quint32(remaining()) < count)
            return false;
        *value = m_request.mid(m_position, int(count));
        m_position += int(count);
        return true;
    }

private:
    const QByteArray& m_request;
    int m_position;
};

Status parseCount(RequestCursor* cursor, quint32* count)
{
    if (!cursor->number(4, count))
        return Status::BadLength;
    return *count > kMostEntries ? Status::TooManyEntries : Status::Good;
}

bool parseRange(RequestCursor* cursor, int* area, quint32* address, quint32* length)
{
    quint32 areaIndex = 0;
    if (!cursor->number(2, &areaIndex) || !cursor->number(4, address) || !cursor->number(4, length))
        return false;
    *area = int(areaIndex);
    return true;
}

Status parseTrailer(RequestCursor* cursor, const Session& session)
{
    QByteArray trailer;
    if (!cursor->bytes(kTrailerSize, &trailer))
        return Status::BadLength;
    if (cursor->remaining() > 0)
        return Status::TrailingBytes;
    if (trailer[0] != kTrailerStart[0] || trailer[1] != kTrailerStart[1])
        return Status::BadParameter;
    const bool sameLogin = session.login == Session::Login::Done &&
                           quint8(trailer[2]) == session.infoByte25 &&
                           quint8(trailer[3]) == session.infoByte24;
    return sameLogin ? Status::Good : Status::NotLoggedIn;
}

} // namespace

Status parseReadRequest(const QByteArray& request, const Session& session,
                        QVector<ReadEntry>* entries)
{
    RequestCursor cursor(request);
    quint32 count = 0;
    const Status counted = parseCount(&cursor, &count);
    if (counted != Status::Good)
        return counted;
    for (quint32 i = 0; i < count; ++i) {
        ReadEntry entry;
        if (!parseRange(&cursor, &entry.area, &entry.address, &entry.length))
            return Status::BadLength;
        entries->append(entry);
    }
    return parseTrailer(&cursor, session);
}

Status parseWriteRequest(const QByteArray& request, const Session& session,
                         QVector<WriteEntry>* entries)
{
    RequestCursor cursor(request);
    quint32 count = 0;
    const Status counted = parseCount(&cursor, &count);
    if (counted != Status::Good)
        return counted;
    for (quint32 i = 0; i < count; ++i) {
        WriteEntry entry;
        quint32 length = 0;
        if (!parseRange(&cursor, &entry.area, &entry.address, &length))
            return Status::BadLength;
        entry.isBit = length == 0;
        if (!cursor.bytes(entry.isBit ? 1 : length, &entry.data))
            return Status::BadLength;
        entries->append(entry);
    }
    return parseTrailer(&cursor, session);
}

} // namespace plc::simulator
