#include "plant.h"

#include "host/points/value_codec.h"
#include "project/symbol_builder.h"
#include "simulators.h"

namespace plc::bench {
namespace {

host::RuntimeSettings everySecond()
{
    host::RuntimeSettings settings;
    settings.times.cycleTime = 1000;
    return settings;
}

} // namespace

project::Symbols plantSymbols()
{
    project::SymbolBuilder builder;
    builder.structure(QStringLiteral("Tank"), kTankBytes);
    for (int i = 0; i < kValuesOfTank; ++i)
        builder.member(QStringLiteral("v%1").arg(i), QStringLiteral("REAL"), 4 * i);
    return *builder.scope(QStringLiteral("Plant"))
                .variable(QStringLiteral("tank"), QStringLiteral("Tank"), 1, 0, {{1, kTanks}})
                .build();
}

Plant::Plant(const host::DriverLibrary& copy, const project::Symbols& symbols, int number,
             quint16 port)
    : m_number(number),
      m_runtime(*copy.take(), everySecond(), symbols, &m_listener),
      m_link(&m_runtime.session(), QStringLiteral("127.0.0.1"), port)
{
    m_runtime.readCyclically(points(), m_link.now());
    m_link.start();
}

QVector<host::DataPoint> Plant::points() const
{
    QVector<host::DataPoint> points;
    for (int tank = 1; tank <= kTanks; ++tank) {
        for (int value = 0; value < kValuesOfTank; ++value) {
            points.append(*m_runtime.points().find(
                QStringLiteral("Plant.tank[%1].v%2").arg(tank).arg(value)));
        }
    }
    return points;
}

bool Plant::isGood(int row) const
{
    return m_runtime.values().reading(row, m_link.now()).state == host::ValueState::Good;
}

bool Plant::isRight(int row) const
{
    const host::ValueTable& table = m_runtime.values();
    return host::decodeValue(table.point(row), table.bytes(row)) ==
           values::Value(valueOf(m_number, row));
}

int Plant::goodValues() const
{
    int good = 0;
    for (int row = 0; row < m_runtime.values().size(); ++row)
        good += isGood(row) && isRight(row) ? 1 : 0;
    return good;
}

int Plant::wrongValues() const
{
    int wrong = 0;
    for (int row = 0; row < m_runtime.values().size(); ++row)
        wrong += isGood(row) && !isRight(row) ? 1 : 0;
    return wrong;
}

} // namespace plc::bench
