#ifndef PLC_HOST_POINTS_VALUE_ASSEMBLY_H
#define PLC_HOST_POINTS_VALUE_ASSEMBLY_H

#include <QtCore/QByteArray>

#include "host/points/freshness.h"
#include "values/export.h"

namespace plc::host {

/// Puts the bytes of a value together from the parts in which replies carry them.
class PLC_HOST_EXPORT ValueAssembly {
public:
    explicit ValueAssembly(quint32 size) : m_bytes(int(size), '\0'), m_freshness(size) {}

    /// Part `data` begins `start` bytes into the value, and may reach beyond both of its ends. The
    /// request for it was sent at `sentAt`.
    void add(qint64 start, const QByteArray& data, qint64 sentAt)
    {
        const qint64 from = qMax<qint64>(0, start);
        const qint64 to = qMin<qint64>(m_bytes.size(), start + data.size());
        if (from >= to)
            return;
        m_bytes.replace(int(from), int(to - from), data.mid(int(from - start), int(to - from)));
        m_freshness.cover(from, to, sentAt);
    }
    bool isComplete() const { return m_freshness.oldest() != Freshness::kNever; }
    /// When the request for the oldest part was sent.
    qint64 oldest() const { return m_freshness.oldest(); }
    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    Freshness m_freshness;
};

} // namespace plc::host

#endif
