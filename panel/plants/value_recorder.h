#ifndef PLC_PANEL_PLANTS_VALUE_RECORDER_H
#define PLC_PANEL_PLANTS_VALUE_RECORDER_H

#include <map>
#include <memory>

#include "panel/config/settings.h"
#include "panel/plants/followed_values.h"
#include "panel/plants/plant.h"
#include "recorder/attention.h"
#include "recorder/recorder_thread.h"

namespace plc::panel {

/// Records the values of PLCs that the configuration names, each change of value or quality. For
/// the thread of the PLCs; times are milliseconds since 1970-01-01T00:00:00Z. Where these leave out
/// seconds, since the program or the computer stood still or the clock was set, there is a gap.
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
    void passSecond(qint64 time);

    recorder::RecorderStatus status() const { return m_thread->status(); }
    /// See RecorderThread::finish().
    recorder::RecorderStatus finish() { return m_thread->finish(); }

private:
    explicit ValueRecorder(std::unique_ptr<recorder::RecorderThread> thread)
        : m_thread(std::move(thread))
    {
    }

    void look(qint64 time);

    std::unique_ptr<recorder::RecorderThread> m_thread;
    std::map<const Plant*, FollowedValues> m_followed;
    recorder::Attention m_attention;
};

} // namespace plc::panel

#endif
