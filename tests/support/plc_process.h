#ifndef PLC_TESTS_SUPPORT_PLC_PROCESS_H
#define PLC_TESTS_SUPPORT_PLC_PROCESS_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QThread>

#include <memory>

#include "e2e/line_process.h"
#include "support/free_port.h"

namespace plc::test {

/// Whether this becomes true on a machine that is busy with other tests.
template <typename Condition>
bool comesTrue(const Condition& condition)
{
    constexpr int kPause = 20; // ms
    QElapsedTimer time;
    time.start();
    while (!condition()) {
        if (time.elapsed() > kPatience)
            return false;
        QThread::msleep(kPause);
    }
    return true;
}

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// plc-simulator, which can be killed and started again at the same port.
class PlcProcess {
public:
    explicit PlcProcess(const QString& project) : m_project(project), m_port(freePort())
    {
        start();
    }

    /// False when it does not come up.
    bool start()
    {
        m_process = std::make_unique<LineProcess>(
            QStringLiteral(PLC_SIMULATOR),
            QStringList{m_project, QStringLiteral("--quiet"), QStringLiteral("--port"),
                        QString::number(m_port)});
        return m_process->nextLine().startsWith(QLatin1String("listening on"));
    }
    void kill() { m_process.reset(); }
    quint16 port() const { return m_port; }

    /// The answer to a command without its leading "ok"; what does not begin with it is kept whole.
    QString command(const QString& line)
    {
        m_process->send(line);
        const QString answer = m_process->nextLine();
        return answer == QLatin1String("ok") || answer.startsWith(QLatin1String("ok "))
                   ? answer.mid(3)
                   : answer;
    }
    void set(const char* label, const QString& value)
    {
        const QString answer =
            command(QStringLiteral("set %1 %2").arg(QLatin1String(label), value));
        if (!answer.isEmpty())
            qFatal("set %s %s: %s", label, qPrintable(value), qPrintable(answer));
    }
    /// Requests that it has had.
    qint64 requests()
    {
        return command(QStringLiteral("status"))
            .section(QLatin1String("requests="), 1)
            .section(QLatin1Char(' '), 0, 0)
            .toLongLong();
    }
    /// Waits until a gateway that reads all its values by one request has taken those of this
    /// moment: the reply to the next read has them, and is dealt with before another one goes out.
    /// Before it there may be a request that was under way and the two of a login.
    bool isSeen()
    {
        constexpr int kRequests = 5;
        const qint64 before = requests();
        return comesTrue([this, before] { return requests() >= before + kRequests; });
    }

private:
    const QString m_project;
    const quint16 m_port;
    std::unique_ptr<LineProcess> m_process;
};

} // namespace plc::test

#endif
