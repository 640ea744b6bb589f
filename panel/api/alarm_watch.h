#ifndef PLC_PANEL_API_ALARM_WATCH_H
#define PLC_PANEL_API_ALARM_WATCH_H

#include <functional>
#include <map>
#include <memory>

#include "panel/alarms/alarm_desk.h"
#include "panel/api/alarm_json.h"
#include "panel/plants/plants.h"

namespace plc::panel {

/// Has the alarms see the values of the PLCs, and clients see the alarms. For the thread of the
/// PLCs.
class AlarmWatch {
public:
    using Clock = std::function<Moment()>;
    /// Of an alarm that has changed: as GET /alarms has it.
    using Tell = std::function<void(const QByteArray& alarm)>;

    /// An error names an alarm whose label leads to nothing, or to something that its condition
    /// does not fit.
    static Expected<void> check(const Plant& plant);

    /// `plants` and `desk` must outlive the watch.
    AlarmWatch(Plants* plants, AlarmDesk* desk, Clock time, Tell tell);

    /// Has the values read; also after PLCs were exchanged.
    void begin();
    /// See PlantListener.
    void sampled(Plant* plant, const QVector<int>& changed);
    /// Once a second.
    void passSecond() { settle(); }

    /// All alarms, in the order of the configuration.
    QByteArray list() const;
    using Past = std::function<void(const Expected<QVector<PastAlarm>>&)>;
    /// As AlarmDesk::between().
    void history(qint64 from, qint64 to, int most, Past past);
    /// As AlarmDesk::acknowledge().
    void acknowledge(const QString& id, qint64 begin, const QString& user,
                     AlarmDesk::Answered answered);
    /// As list() has it.
    QByteArray one(int alarm) const;
    AlarmDesk* desk() const { return m_desk; }
    /// Why the history cannot be written; empty while it can.
    const QString& failure() const { return m_desk->failure(); }

private:
    struct Watched {
        int slot = -1;
        QString label; ///< As the alarm spells it.
    };

    void settle();
    QVector<PastAlarm> pastOf(const QVector<AlarmOccurrence>& occurrences) const;
    void observe(const Plant& plant, const Watched& watched);
    const values::IecType* typeOf(const QString& plc, const QString& label) const;

    Plants* const m_plants;
    AlarmDesk* const m_desk;
    const Clock m_time;
    const Tell m_tell;
    std::map<const Plant*, QVector<Watched>> m_watched;
};

} // namespace plc::panel

#endif
