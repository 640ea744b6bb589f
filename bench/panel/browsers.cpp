#include "bench/panel/browsers.h"

#include <QtCore/QStandardPaths>

namespace plc::bench {

Browsers::~Browsers()
{
    for (const std::unique_ptr<QProcess>& process : m_processes)
        process->terminate();
    for (const std::unique_ptr<QProcess>& process : m_processes)
        process->waitForFinished();
}

QString Browsers::program()
{
    return QStandardPaths::findExecutable(QStringLiteral("chromium"));
}

/// Root, as which a container runs, has no sandbox.
void Browsers::open(const QString& address)
{
    const QString profile = m_folder.filePath(QString::number(m_processes.size()));
    m_processes.push_back(std::make_unique<QProcess>());
    QProcess& process = *m_processes.back();
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program(), {QStringLiteral("--headless"), QStringLiteral("--no-sandbox"),
                              QStringLiteral("--disable-gpu"), QStringLiteral("--no-first-run"),
                              QStringLiteral("--disable-background-networking"),
                              QStringLiteral("--remote-debugging-port=0"),
                              QStringLiteral("--window-size=800,480"),
                              QStringLiteral("--user-data-dir=") + profile, address});
}

} // namespace plc::bench
