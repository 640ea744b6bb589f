#ifndef PLC_TESTS_E2E_PLANT_H
#define PLC_TESTS_E2E_PLANT_H

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <memory>

#include "tests/e2e/line_process.h"
#include "tests/support/free_port.h"

namespace plc::test {

/// What a run of `plc` left.
struct Outcome {
    int exitCode = -1;
    QStringList lines;
    QString errors;
};

inline void PrintTo(const Outcome& outcome, std::ostream* out)
{
    *out << "exit code " << outcome.exitCode << "\n"
         << outcome.lines.join(QLatin1Char('\n')).toStdString() << "\n"
         << outcome.errors.toStdString();
}

/// The program plc-simulator with a project, on a port that stays its own while it is offline.
class Simulator {
public:
    Simulator(const QString& project, const QStringList& options)
        : m_process(QStringLiteral(PLC_SIMULATOR),
                    QStringList{project, QStringLiteral("--port"), QString::number(freePort()),
                                QStringLiteral("--quiet")} +
                        options),
          m_port(m_process.nextLine().section(QLatin1Char(':'), -1))
    {
    }

    QString port() const { return m_port; }
    qint64 pid() const { return m_process.pid(); }

    /// The answer to a command without its leading "ok"; what does not begin with it is kept whole.
    std::string command(const QString& line)
    {
        m_process.send(line);
        QString answer = m_process.nextLine();
        if (answer == QLatin1String("ok"))
            answer.clear();
        else if (answer.startsWith(QLatin1String("ok ")))
            answer.remove(0, 3);
        return answer.toStdString();
    }

private:
    LineProcess m_process;
    QString m_port;
};

/// A project, its simulated PLC, and hosts that talk to it, each in a process of its own.
class Plant : public testing::Test {
protected:
    /// Writes the project file. `json` may use ' for ".
    void writeProject(QByteArray json)
    {
        QFile file(projectPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(json.replace('\'', '"'));
    }
    QString projectPath() const { return m_folder.filePath(QStringLiteral("project.json")); }

    void startSimulator(const QStringList& options = {})
    {
        m_simulator = std::make_unique<Simulator>(projectPath(), options);
        m_port = m_simulator->port();
        ASSERT_GT(m_port.toInt(), 0);
    }
    Simulator& simulator() { return *m_simulator; }
    std::string peek(int area, int address, int count)
    {
        return simulator().command(
            QStringLiteral("peek %1 %2 %3").arg(area).arg(address).arg(count));
    }
    void poke(int area, int address, const char* hex)
    {
        EXPECT_EQ(
            "",
            simulator().command(
                QStringLiteral("poke %1 %2 %3").arg(area).arg(address).arg(QLatin1String(hex))));
    }
    /// A number of the simulator's `status` line.
    int status(const char* name)
    {
        const QString line = QString::fromStdString(simulator().command(QStringLiteral("status")));
        return line.section(QLatin1String(name) + QLatin1Char('='), 1)
            .section(QLatin1Char(' '), 0, 0)
            .toInt();
    }

    /// Connect to this port in place of the simulator's.
    void usePort(quint16 port) { m_port = QString::number(port); }
    /// Give no port: for commands that do not connect.
    void useNoPort() { m_port.clear(); }

    QStringList arguments(const char* command, const QStringList& rest) const
    {
        QStringList list{QString::fromLatin1(command), QStringLiteral("--project"), projectPath(),
                         QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY)};
        if (!m_port.isEmpty())
            list += QStringList{QStringLiteral("--port"), m_port};
        return list + rest;
    }
    std::unique_ptr<LineProcess> start(const char* command, const QStringList& rest)
    {
        return std::make_unique<LineProcess>(QStringLiteral(PLC_HOST), arguments(command, rest));
    }
    Outcome run(const char* command, const QStringList& rest)
    {
        const std::unique_ptr<LineProcess> process = start(command, rest);
        Outcome outcome;
        outcome.exitCode = process->exitCode();
        outcome.lines = process->restOfOutput();
        outcome.errors = process->errors();
        return outcome;
    }

    /// The text that `plc read` shows for one label, without the label.
    std::string readText(const QString& label)
    {
        const Outcome outcome = run("read", {label});
        EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
        return outcome.lines.value(0).section(QStringLiteral(" = "), 1).toStdString();
    }
    void write(const QStringList& assignments)
    {
        const Outcome outcome = run("write", assignments);
        EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    }

private:
    int m_argumentCount = 1;
    char m_name[4] = "e2e";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
    QTemporaryDir m_folder;
    std::unique_ptr<Simulator> m_simulator;
    QString m_port;
};

inline QJsonObject parseJson(const QString& line)
{
    return QJsonDocument::fromJson(line.toUtf8()).object();
}

} // namespace plc::test

#endif
