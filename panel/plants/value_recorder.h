#ifndef PLC_PANEL_PLANTS_VALUE_RECORDER_H
#define PLC_PANEL_PLANTS_VALUE_RECORDER_H

#include <QtCore/QHash>

#include <memory>

#include "panel/config/settings.h"
#include "panel/plants/plant.h"
#include "recorder/recorder_thread.h"

namespace plc::panel {

/// The quality as recordings have it.
recorder::Quality recordedQuality(Quality quality);

/// Records the values of PLCs that the configuration names, each change of value or quality. For
/// the thread of the PLCs; times are milliseconds since 1970-01-01T00:00:00Z.
class ValueRecorder {
public:
    static Expected<std::unique_ptr<ValueRecorder>> start(const RecordSettings& settings,
                                                          qint64 time);

    /// An error names a deadband that fits none of the recorded values, or no number among them.
    static Expected<void> checkDeadbands(const Plant& plant);
    /// Begins with what is known of its values: nothing. An error names a deadband that fits none.
    Expected<void> add(const Plant& plant, qint64 time);
    /// See PlantListener.
    void sampled(const Plant& plant, const QVector<int>& changed, qint64 time);
    /// Once a second, so that it is known that nothing has changed.
    void passSecond(qint64 time) { m_thread->append({}, time); }

    recorder::RecorderStatus status() const { return m_thread->status(); }

private:
    struct Followed {
        int series = -1; ///< -1: not recorded.
        qint64 told = 0; ///< Time of the last sample.
    };

    explicit ValueRecorder(std::unique_ptr<recorder::RecorderThread> thread)
        : m_thread(std::move(thread))
    {
    }

    std::unique_ptr<recorder::RecorderThread> m_thread;
    QHash<const Plant*, QVector<Followed>> m_followed; ///< By slots.
};

} // namespace plc::panel

#endif
