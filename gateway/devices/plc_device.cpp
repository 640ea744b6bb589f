#include "gateway/devices/plc_device.h"

#include <QtCore/QFileInfo>

#include "gateway/config/device_points.h"
#include "gateway/config/same_settings.h"
#include "values/nearest_name.h"

namespace plc::gateway {

PlcDevice::PlcDevice(int number, const DeviceSettings& settings, PlcDeviceListener* listener)
    : m_number(number), m_settings(settings), m_listener(listener)
{
}

PlcDevice::~PlcDevice() = default;

Expected<std::unique_ptr<PlcDevice>> PlcDevice::create(int number, const DeviceSettings& settings,
                                                       const QString& driver,
                                                       PlcDeviceListener* listener)
{
    std::unique_ptr<PlcDevice> device(new PlcDevice(number, settings, listener));
    if (const Expected<void> prepared = device->prepare(driver); !prepared)
        return prepared.error();
    return device;
}

/// As devicePoints() tells what is wrong.
Error PlcDevice::ofThisDevice(const Error& error) const
{
    return {QStringLiteral("device %1: %2").arg(values::quoted(m_settings.name), error.text)};
}

Expected<void> PlcDevice::prepare(const QString& driver)
{
    m_projectTime = QFileInfo(m_settings.project).lastModified();
    Expected<std::unique_ptr<setup::ProjectPlc>> plc = setup::ProjectPlc::open(
        {m_settings.project, m_settings.address, m_settings.port, m_settings.cycleTime, false},
        driver, this);
    if (!plc)
        return ofThisDevice(plc.error());
    m_plc = std::move(*plc);
    const Expected<DevicePoints> points =
        devicePoints(m_settings, m_plc->project(), m_plc->runtime().points());
    if (!points)
        return points.error();
    m_description = points->device;
    m_warnings = points->warnings;
    m_samples =
        std::make_unique<SampleTaker>(m_description.metrics, QDateTime::currentMSecsSinceEpoch());
    return {};
}

bool PlcDevice::isAs(const DeviceSettings& settings) const
{
    return isSame(settings, m_settings) &&
           QFileInfo(m_settings.project).lastModified() == m_projectTime;
}

void PlcDevice::start()
{
    QVector<host::DataPoint> points;
    points.reserve(m_description.metrics.size());
    for (const Metric& metric : m_description.metrics)
        points.append(metric.point);
    m_plc->runtime().readCyclically(points, m_plc->now());
    m_plc->link().start();
}

void PlcDevice::stop()
{
    m_plc->link().stop();
}

bool PlcDevice::isAlive() const
{
    if (m_isFollowed)
        return true;
    return m_lostAt >= 0 && m_plc->now() - m_lostAt <= m_plc->project().settings.staleAfter;
}

QVector<Sample> PlcDevice::takeSamples(qint64 time)
{
    return m_samples->take(m_plc->runtime().values(), m_plc->now(), time);
}

void PlcDevice::write(int metric, const QVector<values::Value>& values, host::WriteSettled settled)
{
    m_plc->runtime().write(m_description.metrics[metric].point, values, m_plc->now(),
                           std::move(settled));
    m_plc->link().pump();
}

void PlcDevice::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    Q_UNUSED(retryDelay)
    if ((state == host::LinkState::Up) != (m_linkState == host::LinkState::Up))
        m_linkSince = QDateTime::currentMSecsSinceEpoch();
    m_linkState = state;
    m_passes.restart(m_plc->runtime().session().passes());
    if (state == host::LinkState::Up) {
        m_linkReason.clear();
        m_listener->linkChanged(m_number, true, QString());
        return;
    }
    if (m_isFollowed) {
        m_isFollowed = false;
        m_lostAt = m_plc->now();
        // What came in a pass that does not end any more is as good as the rest.
        m_listener->passEnded(m_number);
    }
    if (state == host::LinkState::Down && reason != m_linkReason) {
        m_linkReason = reason;
        m_listener->linkChanged(m_number, false, reason);
    }
}

void PlcDevice::requestSettled()
{
    if (!m_passes.hasEnded(m_plc->runtime().session().passes(), m_plc->now()))
        return;
    m_isFollowed = true;
    m_lostAt = -1;
    m_listener->passEnded(m_number);
}

} // namespace plc::gateway
