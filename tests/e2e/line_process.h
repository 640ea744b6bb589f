#ifndef PLC_TESTS_E2E_LINE_PROCESS_H
#define PLC_TESTS_E2E_LINE_PROCESS_H

#include <QtCore/QProcess>
#include <QtCore/QStringList>

namespace plc::test {

/// How long anything that must happen may take on a machine that is busy with other tests.
constexpr int kPatience = 30000; // ms

/// A program that talks in lines.
class LineProcess {
public:
    LineProcess(const QString& program, const QStringList& arguments)
    {
        m_process.start(program, arguments);
        m_process.waitForStarted(kPatience);
    }
    ~LineProcess()
    {
        m_process.kill();
        m_process.waitForFinished(kPatience);
    }

    void send(const QString& line)
    {
        m_process.write(line.toUtf8() + '\n');
        m_process.waitForBytesWritten(kPatience);
    }

    /// The next line of the output; empty when none comes.
    QString nextLine()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(kPatience)) {
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }

    /// Reads on to the first line that holds all of `parts` and returns it; empty when the output
    /// ends or falls silent before.
    QString waitForLine(const QStringList& parts)
    {
        for (;;) {
            const QString line = nextLine();
            bool holdsAll = true;
            for (const QString& part : parts)
                holdsAll = holdsAll && line.contains(part);
            if (line.isEmpty() || holdsAll)
                return line;
        }
    }

    bool isRunning()
    {
        m_process.waitForFinished(0);
        return m_process.state() != QProcess::NotRunning;
    }
    /// Waits for the end. -1 when the program crashed or runs on.
    int exitCode()
    {
        const bool ended =
            m_process.state() == QProcess::NotRunning || m_process.waitForFinished(kPatience);
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    /// What is left of the output; complete after exitCode().
    QStringList restOfOutput() { return lines(m_process.readAllStandardOutput()); }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()); }
    qint64 pid() const { return m_process.processId(); }

private:
    static QStringList lines(const QByteArray& output)
    {
        QStringList list = QString::fromUtf8(output).split(QLatin1Char('\n'));
        list.removeAll(QString());
        return list;
    }

    QProcess m_process;
};

} // namespace plc::test

#endif
