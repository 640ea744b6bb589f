#ifndef PLC_PANEL_API_ALARM_FEED_H
#define PLC_PANEL_API_ALARM_FEED_H

#include <QtCore/QHash>

#include <memory>

#include "panel/alarms/alarm_desk.h"
#include "panel/plants/plants.h"

namespace plc::panel {

/// Brings what is new of values to the alarms, and tells what has become of these. For the thread
/// of the PLCs.
class AlarmFeed {
public:
    /// `tell` gets each alarm that has changed, as the interface shows it.
    using Tell = std::function<void(const QByteArray&)>;

    /// Those of all PLCs. `file` keeps the past; empty: it is not kept beyond the end of the
    /// process. An error names a label that leads to nothing.
    static Expected<std::unique_ptr<AlarmFeed>> start(const Plants& plants, const QString& file,
                                                      qint64 now, Tell tell);

    AlarmDesk& desk() { return *m_desk; }
    /// See PlantListener.
    void sampled(const Plant& plant, const QVector<int>& changed, qint64 now);
    /// Also once a second.
    void settle(qint64 now);

private:
    Expected<void> follow(Plant* plant);

    std::unique_ptr<AlarmDesk> m_desk;
    Tell m_tell;
    QHash<const Plant*, QHash<int, QString>> m_labels; ///< By slots.
};

/// An alarm as /api/v1/alarms shows it.
QByteArray alarmText(const AlarmEngine& engine, int alarm);
/// An occurrence of the past, with the same members.
QByteArray occurrenceText(const AlarmOccurrence& occurrence);

} // namespace plc::panel

#endif
