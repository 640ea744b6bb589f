#ifndef PLC_GATEWAY_DEVICES_PLC_DEVICE_H
#define PLC_GATEWAY_DEVICES_PLC_DEVICE_H

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <memory>
#include <optional>

#include "gateway/config/settings.h"
#include "gateway/devices/sample_taker.h"
#include "gateway/devices/write_target.h"
#include "gateway/model/metric.h"
#include "setup/pass_clock.h"
#include "setup/project_plc.h"
#include "values/expected.h"

namespace plc::gateway {

/// What a PLC tells the gateway. Called from inside the runtime's events.
class PlcDeviceListener {
public:
    virtual ~PlcDeviceListener() = default;

    /// All values were asked for once more, or the link went away: there may be new samples.
    virtual void passEnded(int device) = 0;
    /// The link came up, or it is away for another reason than before.
    virtual void linkChanged(int device, bool isUp, const QString& reason) = 0;
};

/// One PLC: its own copy of the driver, its runtime and its link.
class PlcDevice : public WriteTarget, private host::RuntimeListener {
public:
    /// Reads the project and loads the driver, without connecting. An error names the device.
    static Expected<std::unique_ptr<PlcDevice>> create(int number, const DeviceSettings& settings,
                                                       const QString& driver,
                                                       PlcDeviceListener* listener);
    ~PlcDevice() override;

    int number() const { return m_number; }
    const DeviceSettings& settings() const { return m_settings; }
    /// Whether these settings would make the same device, from the same project file.
    bool isAs(const DeviceSettings& settings) const;
    const Device& description() const override { return m_description; }
    /// What is not wrong but strange; each names the device.
    const QStringList& warnings() const { return m_warnings; }
    QString peer() const { return m_plc->address(); }

    void start();
    void stop();

    /// Whether the values of this PLC are followed: each was asked for since the link came up, and
    /// if it is away now, that is for no longer than values stay good.
    bool isAlive() const;
    host::LinkState linkState() const { return m_linkState; }
    /// Why there is no link; empty while there is one.
    const QString& linkReason() const { return m_linkReason; }
    /// Since when the link is up, or is not; milliseconds since 1970-01-01T00:00:00Z, 0: it never
    /// was.
    qint64 linkSince() const { return m_linkSince; }
    /// Milliseconds from the end of one pass over all values to that of the next; 0: there was
    /// none.
    qint64 passTime() const { return m_passes.duration(); }
    const host::ValueTable& values() const { return m_plc->runtime().values(); }
    /// Milliseconds of the clock of values().
    qint64 now() const { return m_plc->now(); }
    const host::TrafficCounters& counters() const { return m_plc->runtime().counters(); }

    /// What is new since the last call. `time` is milliseconds since 1970-01-01T00:00:00Z.
    QVector<Sample> takeSamples(qint64 time);
    const QVector<Sample>& told() const { return m_samples->told(); }

    /// Settled exactly once, possibly at once.
    void write(int metric, const QVector<values::Value>& values,
               host::WriteSettled settled) override;
    int openWrites() const override { return m_plc->runtime().openWrites(); }

private:
    PlcDevice(int number, const DeviceSettings& settings, PlcDeviceListener* listener);
    Expected<void> prepare(const QString& driver);
    Error ofThisDevice(const Error& error) const;

    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSettled() override;

    const int m_number;
    const DeviceSettings m_settings;
    PlcDeviceListener* const m_listener;
    QDateTime m_projectTime; ///< Of the file's last change when it was read.
    Device m_description;
    QStringList m_warnings;
    std::unique_ptr<setup::ProjectPlc> m_plc;
    std::unique_ptr<SampleTaker> m_samples;
    host::LinkState m_linkState = host::LinkState::Down;
    QString m_linkReason;
    qint64 m_linkSince = 0;
    setup::PassClock m_passes;
    bool m_isFollowed = false; ///< Each value was asked for since the link came up.
    qint64 m_lostAt = -1;      ///< When a link whose values were followed went away.
};

} // namespace plc::gateway

#endif
