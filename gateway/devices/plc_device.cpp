#include "gateway/devices/plc_device.h"

#include <QtCore/QFileInfo>

#include "gateway/config/device_points.h"
#include "gateway/config/same_settings.h"
#include "setup/runtime_settings.h"
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
    Expected<project::Project> project = project::loadProject(m_settings.project);
    if (!project)
        return ofThisDevice(project.error());
    m_project = std::move(*project);
    m_project.address = m_settings.address.value_or(m_project.address);
    m_project.port = m_settings.port.value_or(m_project.port);

    const Expected<host::DriverLibrary> library = host::DriverLibrary::loadCopy(driver);
    if (!library)
        return ofThisDevice(library.error());
    m_library = *library;
    m_runtime = std::make_unique<host::Runtime>(
        m_library->functions(), setup::runtimeSettings(m_project.settings, m_settings.cycleTime),
        m_project, static_cast<host::RuntimeListener*>(this));
    const Expected<DevicePoints> points = devicePoints(m_settings, m_project, m_runtime->points());
    if (!points)
        return points.error();
    m_description = points->device;
    m_warnings = points->warnings;
    m_samples =
        std::make_unique<SampleTaker>(m_description.metrics, QDateTime::currentMSecsSinceEpoch());
    m_link =
        std::make_unique<host::TcpLink>(&m_runtime->session(), m_project.address, m_project.port);
    return {};
}

bool PlcDevice::isAs(const DeviceSettings& settings) const
{
    return isSame(settings, m_settings) &&
           QFileInfo(m_settings.project).lastModified() == m_projectTime;
}

QString PlcDevice::peer() const
{
    return QStringLiteral("%1:%2").arg(m_project.address).arg(m_project.port);
}

void PlcDevice::start()
{
    QVector<host::DataPoint> points;
    points.reserve(m_description.metrics.size());
    for (const Metric& metric : m_description.metrics)
        points.append(metric.point);
    m_runtime->readCyclically(points, m_link->now());
    m_link->start();
}

void PlcDevice::stop()
{
    m_link->stop();
}

bool PlcDevice::isAlive() const
{
    if (m_isFollowed)
        return true;
    return m_lostAt >= 0 && m_link->now() - m_lostAt <= m_project.settings.staleAfter;
}

QVector<Sample> PlcDevice::takeSamples(qint64 time)
{
    return m_samples->take(m_runtime->values(), m_link->now(), time);
}

void PlcDevice::write(int metric, const QVector<values::Value>& values, host::WriteSettled settled)
{
    m_runtime->write(m_description.metrics[metric].point, values, m_link->now(),
                     std::move(settled));
    m_link->pump();
}

void PlcDevice::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    Q_UNUSED(retryDelay)
    if ((state == host::LinkState::Up) != (m_linkState == host::LinkState::Up))
        m_linkSince = QDateTime::currentMSecsSinceEpoch();
    m_linkState = state;
    if (state == host::LinkState::Up) {
        m_passEndedAt = -1;
        m_lastPasses = m_runtime->session().passes();
        m_linkReason.clear();
        m_listener->linkChanged(m_number, true, QString());
        return;
    }
    if (m_isFollowed) {
        m_isFollowed = false;
        m_lostAt = m_link->now();
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
    const int passes = m_runtime->session().passes();
    if (passes == m_lastPasses)
        return;
    m_lastPasses = passes;
    const qint64 now = m_link->now();
    m_passTime = m_passEndedAt < 0 ? m_passTime : now - m_passEndedAt;
    m_passEndedAt = now;
    m_isFollowed = true;
    m_lostAt = -1;
    m_listener->passEnded(m_number);
}

} // namespace plc::gateway
