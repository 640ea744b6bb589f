#include "bench/panel/event_reader.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

namespace plc::bench {
namespace {

constexpr int kLittle = 4096; // bytes

} // namespace

EventReader::EventReader(quint16 port, const QByteArray& subscription, const Manner& manner)
    : m_checks(manner.checks)
{
    if (manner.reads)
        QObject::connect(&m_socket, &QTcpSocket::readyRead, &m_socket, [this] { read(); });
    else
        m_socket.setReadBufferSize(kLittle);
    m_socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    m_socket.write("GET /api/v1/events?subscription=" + subscription +
                   " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) + "\r\n\r\n");
}

void EventReader::forget()
{
    m_bytes = 0;
    m_rows = 0;
    m_ages.clear();
    m_longestGap = 0;
}

void EventReader::catchUp()
{
    m_socket.setReadBufferSize(0);
    m_bytes += m_socket.readAll().size();
}

void EventReader::read()
{
    const QByteArray bytes = m_socket.readAll();
    m_bytes += bytes.size();
    if (!m_checks)
        return;
    m_coded += bytes;
    takeChunks();
    int end = 0;
    while ((end = int(m_pending.indexOf('\n'))) >= 0) {
        takeLine(m_pending.left(end));
        m_pending.remove(0, end + 1);
    }
}

/// Each chunk is its size (hexadecimal), a line end, so many bytes and a line end.
void EventReader::takeChunks()
{
    if (!m_isInBody) {
        const int head = int(m_coded.indexOf("\r\n\r\n"));
        m_isInBody = head >= 0;
        m_coded.remove(0, m_isInBody ? head + 4 : 0);
    }
    while (m_isInBody) {
        const int begin = int(m_coded.indexOf("\r\n")) + 2;
        const int size = m_coded.left(begin - 2).toInt(nullptr, 16);
        if (begin < 2 || m_coded.size() < begin + size + 2)
            return;
        m_pending += m_coded.mid(begin, size);
        m_coded.remove(0, begin + size + 2);
    }
}

void EventReader::takeLine(const QByteArray& line)
{
    if (!line.startsWith("data: {"))
        return;
    const QJsonArray rows =
        QJsonDocument::fromJson(line.mid(6)).object()[QStringLiteral("rows")].toArray();
    if (rows.isEmpty())
        return;
    if (m_sinceEvent.isValid())
        m_longestGap = std::max(m_longestGap, m_sinceEvent.elapsed());
    m_sinceEvent.start();
    double oldest = 0;
    const double now = double(QDateTime::currentMSecsSinceEpoch());
    for (const QJsonValue row : rows)
        oldest = std::max(oldest, now - row.toArray()[3].toDouble());
    m_rows += rows.size();
    m_ages.push_back(int(oldest));
}

} // namespace plc::bench
