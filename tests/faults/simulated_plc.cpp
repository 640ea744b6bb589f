#include "faults/simulated_plc.h"

#include "faults/frames.h"

namespace plc::faults {
namespace {

constexpr int kCommandPatience = 30000; // ms
constexpr int kMostPeekedBytes = 4096;

} // namespace

SimulatedPlc::SimulatedPlc(const QString& projectFile)
{
    // In one stream the answer to a command stands behind all that happened before it.
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(
        QStringLiteral(PLC_SIMULATOR),
        {projectFile, QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--verbose")});
    const QByteArray greeting = nextLine();
    m_port = quint16(greeting.mid(greeting.lastIndexOf(':') + 1).toInt());
    command(QStringLiteral("status"));
}

SimulatedPlc::~SimulatedPlc()
{
    m_process.kill();
    m_process.waitForFinished(kCommandPatience);
}

QByteArray SimulatedPlc::command(const QString& line)
{
    m_process.write(line.toUtf8() + '\n');
    for (;;) {
        const QByteArray answer = nextLine();
        if (answer.startsWith("ok"))
            return answer.mid(3);
        if (answer.isEmpty() || answer.startsWith("error:"))
            return answer;
        noteFrame(answer);
    }
}

QByteArray SimulatedPlc::peek(int area, int address, int count)
{
    QByteArray bytes;
    for (int at = 0; at < count; at += kMostPeekedBytes) {
        bytes += QByteArray::fromHex(command(QStringLiteral("peek %1 %2 %3")
                                                 .arg(area)
                                                 .arg(address + at)
                                                 .arg(qMin(kMostPeekedBytes, count - at))));
    }
    return bytes;
}

void SimulatedPlc::poke(int area, int address, const QByteArray& bytes)
{
    command(QStringLiteral("poke %1 %2 %3")
                .arg(area)
                .arg(address)
                .arg(QString::fromLatin1(bytes.toHex())));
}

QByteArray SimulatedPlc::nextLine()
{
    while (!m_process.canReadLine() && m_process.waitForReadyRead(kCommandPatience)) {
    }
    return m_process.readLine().trimmed();
}

/// "PEER > HEX [TEXT]" for a request, with < for its reply.
void SimulatedPlc::noteFrame(const QByteArray& line)
{
    const int direction = qMax(int(line.indexOf(" > ")), int(line.indexOf(" < ")));
    if (direction < 0)
        return;
    const QByteArray peer = line.left(direction);
    const QByteArray frame = QByteArray::fromHex(line.mid(direction + 3).split('[').first());
    if (line.at(direction + 1) == '>') {
        m_unanswered.insert(peer, m_writes.size());
        if (int(quint8(frame.at(kServicePosition))) == kWriteService)
            noteWrite(frame);
    } else if (bigEndian(frame, kStatusPosition, 2) == 0) {
        for (std::size_t i = m_unanswered.take(peer); i < m_writes.size(); ++i)
            m_writes[i].isTaken = true;
    } else {
        m_unanswered.remove(peer);
    }
}

void SimulatedPlc::noteWrite(const QByteArray& request)
{
    if (request.size() < kFirstEntryPosition)
        return;
    const quint32 count = bigEndian(request, kEntryCountPosition, 4);
    int position = kFirstEntryPosition;
    for (quint32 i = 0; i < count && position + 10 <= request.size(); ++i) {
        WriteRecord record;
        record.area = int(bigEndian(request, position, 2));
        record.address = bigEndian(request, position + 2, 4);
        const quint32 length = bigEndian(request, position + 6, 4);
        record.isBit = length == 0;
        position += 10;
        const int size = record.isBit ? 1 : int(length);
        record.data = request.mid(position, size);
        position += size;
        m_writes.push_back(record);
    }
}

} // namespace plc::faults
