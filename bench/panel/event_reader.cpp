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
                   " HTTP/1.0\r\nHost: 127.0.0.1:" + QByteArray::number(port) + "\r\n\r\n");
}

void EventReader::forget()
{
    m_bytes = 0;
    m_events = 0;
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
    // An event ends with an empty line; what it holds has none.
    m_events += std::count(bytes.begin(), bytes.end(), '\n') / 4;
    if (!m_checks)
        return;
    m_pending += bytes;
    int end = 0;
    while ((end = int(m_pending.indexOf('\n'))) >= 0) {
        takeLine(m_pending.left(end));
        m_pending.remove(0, end + 1);
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
