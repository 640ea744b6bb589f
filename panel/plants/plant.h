#ifndef PLC_PANEL_PLANTS_PLANT_H
#define PLC_PANEL_PLANTS_PLANT_H

#include <QtCore/QString>
#include <QtCore/QTimer>

#include <memory>
#include <optional>

#include "panel/config/plc_settings.h"
#include "panel/model/live_value.h"
#include "panel/model/plc_link.h"
#include "panel/plants/live_table.h"
#include "panel/plants/wanted_values.h"
#include "panel/plants/write_rules.h"
#include "setup/pass_clock.h"
#include "setup/project_plc.h"
#include "values/expected.h"

namespace plc::panel {

class Plant;

/// What a PLC tells the panel. Called from inside the runtime's events and from timers.
class PlantListener {
public:
    virtual ~PlantListener() = default;

    /// All values were looked at once more; `changed` are the slots with another value or quality.
    virtual void sampled(Plant* plant, const QVector<int>& changed) = 0;
    virtual void linkChanged(Plant* plant) = 0;
};

/// One PLC: its own copy of the driver, its runtime and its link, in the thread that makes it.
class Plant : private host::RuntimeListener {
public:
    /// Reads the project and loads the driver, without connecting. An error names the PLC.
    static Expected<std::unique_ptr<Plant>> create(const PlcSettings& settings, bool isReadOnly,
                                                   const QString& driver, PlantListener* listener);
    ~Plant() override;

    const PlcSettings& settings() const { return m_settings; }
    const QString& name() const { return m_settings.name; }
    const project::Project& project() const { return m_plc->project(); }
    /// "192.168.0.12:1200"
    QString address() const { return m_plc->address(); }
    bool isReadOnly() const { return m_plc->isReadOnly(); }

    void start();
    void stop();

    const PlcLink& link() const { return m_link; }
    /// ms from the end of one pass over all values to that of the next; 0: there was none.
    qint64 passTime() const { return m_passes.duration(); }
    const host::TrafficCounters& counters() const { return m_plc->runtime().counters(); }

    /// A value by its label, however that is spelt; "LABEL*N" for N elements. Errors say which
    /// label may have been meant for some of a second: that takes its time.
    Expected<host::DataPoint> find(const QString& text) const;
    /// Those of the configuration, which are read always, in its order.
    const QVector<int>& recorded() const { return m_recorded; }

    /// Has a value read all the time until release(). See WantedValues.
    int want(const host::DataPoint& point);
    void release(int slot);
    int findSlot(const QString& text) const { return m_wanted.find(text); }
    const host::DataPoint& point(int slot) const { return m_wanted.point(slot); }
    /// Values that are read all the time.
    int wanted() const { return m_wanted.size(); }
    /// What is known of it, as of the last sample.
    const LiveValue& value(int slot) const;
    /// As LiveTable::confirmed().
    const std::optional<Moment>& confirmed() const { return m_live.confirmed(); }

    /// Which values may be written, for any thread; null: none may.
    std::shared_ptr<const WriteRules> writable() const { return isReadOnly() ? nullptr : m_rules; }
    bool isWritable(const host::DataPoint& point) const;
    /// Why these values must not be written; empty: they may be.
    QString writeObstacle(const host::DataPoint& point, const QVector<values::Value>& values) const;
    /// Each is settled exactly once, possibly at once.
    void write(const host::DataPoint& point, const QVector<values::Value>& values,
               host::WriteSettled settled);
    void readOnce(const host::DataPoint& point, host::ReadSettled settled);
    int openWrites() const { return m_plc->runtime().openWrites(); }

private:
    Plant(const PlcSettings& settings, PlantListener* listener);
    Expected<void> prepare(const QString& driver, bool isReadOnly);
    Expected<QVector<host::DataPoint>> recordedPoints() const;
    void readWanted();
    void sample(bool hasPassEnded);
    void passSecond();

    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSettled() override;

    const PlcSettings m_settings;
    PlantListener* const m_listener;
    std::unique_ptr<setup::ProjectPlc> m_plc;
    std::shared_ptr<const WriteRules> m_rules = std::make_shared<WriteRules>();
    PlcLink m_link;
    WantedValues m_wanted;
    QVector<int> m_recorded;
    QVector<int> m_rows; ///< The slot of each row of the runtime.
    LiveTable m_live;
    QTimer m_exchange; ///< Has what is wanted read; once for many wishes.
    QTimer m_seconds;
    setup::PassClock m_passes;
    qint64 m_sampledAt = 0;
    mutable int m_hintsLeft; ///< Of this second.
};

} // namespace plc::panel

#endif
