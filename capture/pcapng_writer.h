#ifndef PLC_CAPTURE_PCAPNG_WRITER_H
#define PLC_CAPTURE_PCAPNG_WRITER_H

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>
#include <QtCore/QString>

#include <chrono>

#include "values/export.h"

namespace plc::capture {

/// Writes Ethernet packets as a pcapng file: one section, one interface, times in nanoseconds.
///
/// Every packet goes to the device in one piece, so that a file which ends early, because the
/// process or the disk did, is readable up to its last whole packet. For that the device is opened
/// with QIODevice::Unbuffered.
class PLC_HOST_EXPORT PcapngWriter {
public:
    /// Writes the head of the file. `device` is open for writing and outlives the writer;
    /// `application` names the program in the file.
    PcapngWriter(QIODevice* device, const QString& application);

    void writePacket(std::chrono::nanoseconds sinceEpoch, const QByteArray& packet);

    /// What went wrong; empty while all could be written. Nothing is written after a failure.
    const QString& error() const { return m_error; }

private:
    void writeBlock(quint32 type, const QByteArray& body);
    void writeWhole(const QByteArray& block);
    void cutOff(qint64 bytes);

    QIODevice* m_device;
    QString m_error;
};

} // namespace plc::capture

#endif
