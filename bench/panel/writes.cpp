// Writes that come at once to a panel with an audit: how long they take, and for how long no values
// come meanwhile. Prints a line for each round.

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "bench/panel/event_reader.h"
#include "bench/panel/panel_load.h"
#include "bench/support/measured_loop.h"

namespace plc::bench {
namespace {

constexpr int kValues = 1000;
constexpr int kWrites = 100;
constexpr int kRounds = 5;
constexpr int kLongestWait = 120000; // ms
constexpr int kSomePasses = 3000;    // ms

/// One write of its own connection.
class Writer {
public:
    Writer(quint16 port, int round, int number)
    {
        QObject::connect(&m_socket, &QTcpSocket::readyRead, &m_socket,
                         [this] { m_answer += m_socket.readAll(); });
        const QByteArray place = QByteArray::number(number);
        const QByteArray body = R"({"plc":"plc","label":"Load.set[)" + place + R"(]","value":)" +
                                QByteArray::number(round) + R"(,"id":")" +
                                QByteArray::number(round) + '/' + place + "\"}";
        m_socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        m_socket.write(
            "POST /api/v1/writes HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) +
            "\r\nContent-Type: application/json\r\nContent-Length: " +
            QByteArray::number(body.size()) + "\r\n\r\n" + body);
    }
    bool isAnswered() const { return m_answer.endsWith("}\n"); }
    bool isDone() const { return m_answer.contains("\"outcome\":\"done\""); }

private:
    QTcpSocket m_socket;
    QByteArray m_answer;
};

/// Whether all were done.
bool write(const PanelLoad& load, EventReader* reader, int round)
{
    reader->forget();
    QElapsedTimer clock;
    clock.start();
    std::vector<std::unique_ptr<Writer>> writers;
    for (int i = 1; i <= kWrites; ++i)
        writers.push_back(std::make_unique<Writer>(load.port(), round, i));
    const auto areAnswered = [&] {
        return std::all_of(writers.begin(), writers.end(),
                           [](const auto& writer) { return writer->isAnswered(); });
    };
    runUntil("writes are answered", areAnswered, kLongestWait);
    const qint64 total = clock.elapsed();
    runFor(kSomePasses);
    const auto done = std::count_if(writers.begin(), writers.end(),
                                    [](const auto& writer) { return writer->isDone(); });
    std::printf("%d writes at once: %d done in %d ms, values at most %d ms apart\n", kWrites,
                int(done), int(total), int(reader->longestGap()));
    std::fflush(stdout);
    return int(done) == kWrites;
}

int run(const QString& panel)
{
    PanelLoad load(kValues, panel);
    load.start();
    EventReader reader(load.port(), load.subscribe(1, kValues), EventReader::Manner{true, true});
    runUntil(
        "values come", [&] { return reader.rows() > 2 * kValues; }, kLongestWait);
    bool areDone = true;
    for (int round = 1; round <= kRounds; ++round)
        areDone = write(load, &reader, round) && areDone;
    return areDone ? 0 : 1;
}

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    return plc::bench::run(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(PLC_PANEL));
}
