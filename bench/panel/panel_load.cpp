#include "bench/panel/panel_load.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QTcpSocket>

namespace plc::bench {
namespace {

constexpr int kPatience = 60000; // ms

QByteArray portOf(const QByteArray& line)
{
    QByteArray digits = line.mid(line.lastIndexOf(':') + 1);
    return digits.replace('/', "");
}

} // namespace

PanelLoad::PanelLoad(int values, const QString& panel) : m_values(values), m_program(panel) {}

PanelLoad::~PanelLoad()
{
    m_panel.terminate();
    m_panel.waitForFinished();
    m_simulator.kill();
    m_simulator.waitForFinished();
}

QString PanelLoad::file(const char* name, const QByteArray& content) const
{
    QFile file(m_folder.filePath(QLatin1String(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    return file.fileName();
}

QByteArray PanelLoad::lineOf(QProcess* process)
{
    while (!process->canReadLine()) {
        if (!process->waitForReadyRead(kPatience))
            qFatal("%s says nothing", qPrintable(process->program()));
    }
    return process->readLine().trimmed();
}

void PanelLoad::start()
{
    const QString project = file("project.json", R"({"name": "load",
  "plc": {"address": "127.0.0.1", "port": 1200},
  "areas": [{"index": 0, "size": )" + QByteArray::number(4 * m_values) +
                                                     R"(},
    {"index": 1, "size": 400}],
  "scopes": [{"name": "Load", "variables": [
    {"name": "clock", "type": "UDINT", "array": [[1, )" +
                                                     QByteArray::number(m_values) +
                                                     R"(]], "area": 0, "offset": 0,
     "signal": {"kind": "clock", "interval": 1}},
    {"name": "set", "type": "UDINT", "array": [[1, 100]], "area": 1, "offset": 0}]}],
  "cyclic": ["Load.clock[1..)" + QByteArray::number(m_values) +
                                                     R"(]"]})");
    m_simulator.start(
        QStringLiteral(PLC_SIMULATOR),
        {project, QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--quiet")});
    const QByteArray plc = portOf(lineOf(&m_simulator));
    const QString configuration = file("panel.json", R"({"listen": "127.0.0.1:0",
  "record": {"file": "record.sqlite"}, "audit": "audit.jsonl",
  "plcs": [{"name": "plc", "project": "project.json", "cycle": 1000, "port": )" +
                                                         plc + "}]}");
    m_panel.setStandardErrorFile(m_folder.filePath(QStringLiteral("panel.log")));
    m_panel.start(m_program, {QStringLiteral("--config"), configuration});
    m_port = portOf(lineOf(&m_panel)).toUShort();
}

qint64 PanelLoad::requests()
{
    m_simulator.write("status\n");
    const QByteArray status = lineOf(&m_simulator);
    const int begin = int(status.indexOf("requests=")) + 9;
    return status.mid(begin, status.indexOf(' ', begin) - begin).toLongLong();
}

QByteArray PanelLoad::ask(const QByteArray& method, const QByteArray& target,
                          const QByteArray& body) const
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
    if (!socket.waitForConnected(kPatience))
        qFatal("the panel takes no connection: %s", qPrintable(socket.errorString()));
    QByteArray head = method + ' ' + target +
                      " HTTP/1.0\r\nHost: 127.0.0.1:" + QByteArray::number(m_port) + "\r\n";
    if (!body.isEmpty())
        head +=
            "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\n";
    socket.write(head + "\r\n" + body);
    QByteArray answer;
    while (socket.waitForReadyRead(kPatience))
        answer += socket.readAll();
    if (!answer.startsWith("HTTP/1.1 2") && !answer.startsWith("HTTP/1.0 2"))
        qFatal("%s %s: %s", method.constData(), target.constData(), answer.left(500).constData());
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

QString PanelLoad::page(int first, int count) const
{
    QStringList values;
    for (int i = first; i < first + count; ++i)
        values.append(QStringLiteral("v=plc|Load.clock[%1]").arg(i));
    return QStringLiteral("http://127.0.0.1:%1/#values?").arg(m_port) +
           values.join(QLatin1Char('&'));
}

int PanelLoad::streams() const
{
    const QJsonObject statistics =
        QJsonDocument::fromJson(ask("GET", "/api/v1/statistics")).object();
    return statistics[QStringLiteral("server")].toObject()[QStringLiteral("streams")].toInt(-1);
}

QByteArray PanelLoad::subscribe(int first, int count) const
{
    QByteArray values;
    for (int i = first; i < first + count; ++i)
        values += (values.isEmpty() ? "" : ",") +
                  QByteArray(R"({"plc":"plc","label":"Load.clock[)") + QByteArray::number(i) +
                  "]\"}";
    const QByteArray answer = ask("POST", "/api/v1/subscriptions", "{\"values\":[" + values + "]}");
    const int begin = int(answer.indexOf("\"id\":\"")) + 6;
    return answer.mid(begin, answer.indexOf('"', begin) - begin);
}

} // namespace plc::bench
