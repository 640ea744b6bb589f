#include "simulators.h"

#include <QtCore/QFile>

namespace plc::bench {
namespace {

constexpr int kPatience = 30000; // ms

/// What the value `i` of each tank is.
QByteArray valuesOfTanks(int plant, int i)
{
    QByteArray values;
    for (int tank = 0; tank < kTanks; ++tank) {
        const float value = valueOf(plant, kValuesOfTank * tank + i);
        values += (tank > 0 ? ", " : "") + QByteArray::number(int(value));
    }
    return values;
}

QByteArray plantJson(int plant)
{
    QByteArray members;
    for (int i = 0; i < kValuesOfTank; ++i) {
        members += (i > 0 ? ", " : "") + QByteArray("{\"name\": \"v") + QByteArray::number(i) +
                   "\", \"type\": \"REAL\", \"offset\": " + QByteArray::number(4 * i) +
                   ", \"signal\": {\"kind\": \"constant\", \"value\": [" + valuesOfTanks(plant, i) +
                   "]}}";
    }
    return "{\"name\": \"Plant\", \"areas\": [{\"index\": 1, \"size\": 1024}], \"structures\": ["
           "{\"name\": \"Tank\", \"size\": " +
           QByteArray::number(kTankBytes) + ", \"members\": [" + members +
           "]}], \"scopes\": [{\"name\": \"Plant\", \"variables\": [{\"name\": \"tank\", \"type\": "
           "\"Tank\", \"area\": 1, \"offset\": 0, \"array\": [[1, " +
           QByteArray::number(kTanks) + "]]}]}]}";
}

} // namespace

Simulators::Simulators(int count) : m_processes(size_t(count)), m_ports(size_t(count), 0)
{
    for (int i = 0; i < count; ++i) {
        QFile file(projectFile(i));
        if (!file.open(QIODevice::WriteOnly) || file.write(plantJson(i)) < 0)
            qFatal("cannot write %s", qPrintable(file.fileName()));
        file.close();
        start(i);
    }
}

QString Simulators::projectFile(int index) const
{
    return m_folder.filePath(QStringLiteral("plant%1.json").arg(index));
}

Simulators::~Simulators()
{
    for (int i = 0; i < int(m_processes.size()); ++i)
        kill(i);
}

void Simulators::kill(int index)
{
    m_processes[size_t(index)]->kill();
    m_processes[size_t(index)]->waitForFinished(kPatience);
}

void Simulators::start(int index)
{
    auto process = std::make_unique<QProcess>();
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(QStringLiteral(PLC_SIMULATOR),
                   {QStringLiteral("--port"), QString::number(m_ports[size_t(index)]),
                    QStringLiteral("--quiet"), projectFile(index)});
    QByteArray line;
    while (!line.endsWith('\n') && process->waitForReadyRead(kPatience))
        line += process->readLine();
    m_ports[size_t(index)] = line.trimmed().split(':').last().toUShort();
    if (m_ports[size_t(index)] == 0)
        qFatal("the simulator does not listen: %s", line.constData());
    m_processes[size_t(index)] = std::move(process);
}

} // namespace plc::bench
