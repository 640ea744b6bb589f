#ifndef PLC_BENCH_BASELINE_STRAIGHTFORWARD_DRIVER_H
#define PLC_BENCH_BASELINE_STRAIGHTFORWARD_DRIVER_H

#include <QtCore/QHash>
#include <QtCore/QMutex>

#include "driver/plc_driver.h"

namespace plc::bench {
namespace baseline {

/// Where a label leads.
struct Place {
    int dataType = 0;
    int address = 0;
    int areaIndex = 0;
};

/// The same work as the driver's, done the straightforward way: a hash entry for each byte of the
/// image, a walk over all variables of a scope, records copied where they are needed, a bubble
/// sort. It does what the benchmarks need of it, correctly; main() checks that against the driver.
class StraightforwardDriver {
public:
    // symbols.cpp
    void passSymbols(const QList<Label_Type_Info>& scopes);
    bool resolve(const QString& label, Place& place) const;

    // values.cpp
    int readValue(const QString& label, QByteArray* value, int count);
    /// Writes into the image only.
    int writeValue(const QString& label, QByteArray* value, int count);
    void store(int areaIndex, int address, const QByteArray& bytes);
    int imageSize() const { return int(m_image.size()); }

    // read_list.cpp
    int rebuildReadList(const QList<HostVarItem>& items, int maxReadBytes);
    int addOnceRead(const RW_VAR& read);
    void clearOnceReads() { m_onceReadList.clear(); }

    // request_cycle.cpp
    void addRead(const RW_VAR& read) { m_readList.append(read); }
    void addWrite(const RW_VAR& write);
    /// The next request: all writes that fit, else reads.
    Protocol* nextRequest();
    /// Takes the reply to it: the first time its size is recorded, the second time it is consumed.
    int takeReply(const QByteArray& reply);
    /// Stores the data blocks of a read reply at the places of the current batch.
    void storeReply(const QByteArray& reply);

private:
    bool resolveParts(const Label_Type_Info& record, const QStringList& parts, int index,
                      Place& place) const;
    uchar& byteAt(int areaIndex, int address);
    void mergeRange(RW_VAR read, int maxReadBytes);
    void buildReadRequest();
    void buildWriteRequest();
    void queueRequest(const QByteArray& frame);

    QHash<QString, Label_Type_Info> m_symbols;
    QHash<quint64, uchar> m_image;
    QMutex m_imageMutex;
    QMutex m_listMutex;
    QList<RW_VAR> m_readList;
    QList<RW_VAR> m_writeList;
    QList<RW_VAR> m_onceReadList;
    QList<RW_VAR> m_batch;
    QList<Protocol> m_requests;
    bool m_writing = false;
};

} // namespace baseline
} // namespace plc::bench

#endif
