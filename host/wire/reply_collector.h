#ifndef PLC_HOST_WIRE_REPLY_COLLECTOR_H
#define PLC_HOST_WIRE_REPLY_COLLECTOR_H

#include <QtCore/QByteArray>

#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

/// Puts a reply together from the pieces in which it arrives. Where it ends its own length field
/// says, also when the driver expects a size: a reply of another size is then turned down as a
/// whole, and no tail of it stays behind to be taken for the next reply.
class PLC_HOST_EXPORT ReplyCollector {
public:
    void clear() { m_bytes.clear(); }
    void append(const QByteArray& bytes) { m_bytes += bytes; }

    /// Whether what has come so far can be a frame.
    bool mayBeFrame() const { return mayBeginFrame(m_bytes); }
    /// The first bytes, for people.
    QString beginning() const { return QString::fromLatin1(m_bytes.left(8).toHex(' ')).toUpper(); }
    int size() const { return int(m_bytes.size()); }
    bool isComplete() const
    {
        const int frameSize = statedFrameSize(m_bytes);
        return frameSize >= 0 && m_bytes.size() >= frameSize;
    }
    /// The frame, once it is complete.
    QByteArray frame() const { return m_bytes.left(statedFrameSize(m_bytes)); }
    /// Bytes that arrived behind the complete frame.
    int surplus() const { return size() - statedFrameSize(m_bytes); }

private:
    QByteArray m_bytes;
};

} // namespace plc::host

#endif
