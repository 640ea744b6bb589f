#include "panel/plants/plant.h"

#include <QtCore/QDateTime>
#include <QtCore/QSet>

#include <utility>

#include "panel/plants/label_spelling.h"
#include "project/label_expansion.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

constexpr int kSecond = 1000; // ms
/// Of one PLC; more than this no pass would read in a useful time.
constexpr int kMostRecorded = 100000;
/// Each takes up to 10 ms in a program of 100,000 names, in which no PLC is talked to.
constexpr int kHintsOfSecond = 5;

qint64 wallClock()
{
    return QDateTime::currentMSecsSinceEpoch();
}

} // namespace

Plant::Plant(const PlcSettings& settings, PlantListener* listener)
    : m_settings(settings), m_listener(listener), m_hintsLeft(kHintsOfSecond)
{
    m_link.since = wallClock();
    m_exchange.setSingleShot(true);
    m_exchange.setInterval(0);
    QObject::connect(&m_exchange, &QTimer::timeout, &m_exchange, [this] { readWanted(); });
    QObject::connect(&m_seconds, &QTimer::timeout, &m_seconds, [this] { passSecond(); });
}

Plant::~Plant() = default;

Expected<std::unique_ptr<Plant>> Plant::create(const PlcSettings& settings, bool isReadOnly,
                                               const QString& driver, PlantListener* listener)
{
    std::unique_ptr<Plant> plant(new Plant(settings, listener));
    if (const Expected<void> prepared = plant->prepare(driver, isReadOnly); !prepared)
        return Error{
            QStringLiteral("PLC %1: %2").arg(values::quoted(settings.name), prepared.error().text)};
    return plant;
}

Expected<void> Plant::prepare(const QString& driver, bool isReadOnly)
{
    Expected<std::unique_ptr<setup::ProjectPlc>> plc = setup::ProjectPlc::open(
        {m_settings.project, m_settings.address, m_settings.port, m_settings.cycleTime, isReadOnly},
        driver, this);
    if (!plc)
        return plc.error();
    m_plc = std::move(*plc);
    const Expected<QVector<host::DataPoint>> recorded = recordedPoints();
    if (!recorded)
        return recorded.error();
    for (const host::DataPoint& point : *recorded)
        m_recorded.append(m_wanted.want(point));
    if (m_settings.writable) {
        Expected<WriteRules> rules =
            WriteRules::make(*m_settings.writable, project(), m_plc->runtime().points());
        if (!rules)
            return rules.error();
        m_rules = std::make_shared<WriteRules>(std::move(*rules));
    }
    return {};
}

Expected<QVector<host::DataPoint>> Plant::recordedPoints() const
{
    QVector<host::DataPoint> points;
    QSet<QString> known;
    const auto add = [&](const Expected<host::DataPoint>& point) -> Expected<void> {
        if (!point)
            return point.error();
        if (known.contains(point->text))
            return {};
        if (points.size() == kMostRecorded)
            return Error{QStringLiteral("more than %1 values are recorded; name fewer labels")
                             .arg(kMostRecorded)};
        known.insert(point->text);
        points.append(*point);
        return {};
    };
    project::LabelExpander expander(project());
    for (const QString& text : m_settings.record) {
        const Expected<QStringList> labels = expander.expand(text);
        if (!labels)
            return labels.error();
        for (const QString& label : *labels) {
            if (const Expected<void> added = add(find(label)); !added)
                return added.error();
        }
    }
    if (!m_settings.record.isEmpty())
        return points;
    for (const project::CyclicLabel& label : project().cyclic) {
        const Expected<void> added =
            add(m_plc->runtime().points().find(label.label, label.elements, label.station));
        if (!added)
            return added.error();
    }
    return points;
}

void Plant::start()
{
    readWanted();
    m_seconds.start(kSecond);
    m_plc->link().start();
}

void Plant::stop()
{
    m_seconds.stop();
    m_plc->link().stop();
}

Expected<host::DataPoint> Plant::find(const QString& text) const
{
    const host::DataPointFinder& points = m_plc->runtime().points();
    if (m_hintsLeft == 0)
        return points.find(spelt(text), project::Hints::None);
    Expected<host::DataPoint> found = points.find(spelt(text));
    if (!found)
        --m_hintsLeft;
    return found;
}

int Plant::want(const host::DataPoint& point)
{
    const int slot = m_wanted.want(point);
    m_exchange.start();
    return slot;
}

void Plant::release(int slot)
{
    m_wanted.release(slot, m_plc->now());
}

const LiveValue& Plant::value(int slot) const
{
    static const LiveValue kUnknown;
    return m_live.has(slot) ? m_live.value(slot) : kUnknown;
}

bool Plant::isWritable(const host::DataPoint& point) const
{
    return !isReadOnly() && m_rules->isWritable(point);
}

QString Plant::writeObstacle(const host::DataPoint& point,
                             const QVector<values::Value>& values) const
{
    return isReadOnly() ? QStringLiteral("the PLC is read-only here")
                        : m_rules->obstacle(point, values);
}

void Plant::write(const host::DataPoint& point, const QVector<values::Value>& values,
                  host::WriteSettled settled)
{
    m_plc->runtime().write(point, values, m_plc->now(), std::move(settled));
    m_plc->link().pump();
}

void Plant::readOnce(const host::DataPoint& point, host::ReadSettled settled)
{
    m_plc->runtime().readOnce(point, m_plc->now(), std::move(settled));
    m_plc->link().pump();
}

void Plant::readWanted()
{
    if (!m_wanted.takeChange())
        return;
    m_rows = m_wanted.used();
    QVector<host::DataPoint> points;
    points.reserve(m_rows.size());
    for (const int slot : std::as_const(m_rows))
        points.append(m_wanted.point(slot));
    m_plc->runtime().readCyclically(points, m_plc->now());
    m_plc->link().pump();
}

/// Between passes too: what no pass shows are values that become stale, and what came of a pass
/// that takes long.
void Plant::sample(bool hasPassEnded)
{
    const qint64 now = m_plc->now();
    const QVector<int>& changed =
        m_live.sample(m_plc->runtime().values(), m_rows, now, currentMoment());
    if (!hasPassEnded && changed.isEmpty() && now - m_sampledAt < kSecond)
        return;
    m_sampledAt = now;
    m_listener->sampled(this, changed);
}

void Plant::passSecond()
{
    m_hintsLeft = kHintsOfSecond;
    sample(false);
    for (const int slot : m_wanted.expire(m_plc->now()))
        m_live.forget(slot);
    readWanted();
}

/// A PLC that cannot be reached is down, however often it is tried again.
void Plant::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    Q_UNUSED(retryDelay)
    if (state == host::LinkState::Connecting)
        return;
    const PlcLink::State now = state == host::LinkState::Up ? PlcLink::Up : PlcLink::Down;
    m_passes.restart(m_plc->runtime().session().passes());
    if (now == m_link.state && reason == m_link.reason)
        return;
    if (now != m_link.state)
        m_link.since = wallClock();
    m_link.state = now;
    m_link.reason = now == PlcLink::Up ? QString() : reason;
    m_listener->linkChanged(this);
}

void Plant::requestSettled()
{
    if (m_passes.hasEnded(m_plc->runtime().session().passes(), m_plc->now()))
        sample(true);
}

} // namespace plc::panel
