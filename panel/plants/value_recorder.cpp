#include "panel/plants/value_recorder.h"

#include "configuration/label_places.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

/// One for each recorded value.
Expected<QVector<double>> deadbandsOf(const Plant& plant)
{
    configuration::LabelPlaces places(plant.project());
    for (const int slot : plant.recorded())
        places.append(plant.point(slot).text);
    QVector<double> deadbands(plant.recorded().size(), 0.0);
    for (const configuration::DeadbandRule& rule : plant.settings().deadbands) {
        const Expected<QVector<int>> fitting = places.fitting(rule.labels);
        if (!fitting)
            return Error{
                QStringLiteral("PLC %1: deadband: %2").arg(plant.name(), fitting.error().text)};
        bool hasNumber = false;
        for (const int place : *fitting) {
            deadbands[place] = rule.deadband;
            const host::DataPoint& point = plant.point(plant.recorded()[place]);
            hasNumber = hasNumber || recorder::isNumeric(recorder::describe(point, plant.name()));
        }
        if (!hasNumber)
            return Error{QStringLiteral("PLC %1: deadband: %2 is no number")
                             .arg(plant.name(), values::quoted(rule.labels))};
    }
    return deadbands;
}

} // namespace

Expected<std::unique_ptr<ValueRecorder>> ValueRecorder::start(const RecordSettings& settings,
                                                              qint64 time)
{
    recorder::Limits limits;
    limits.size = settings.size;
    limits.age = settings.age;
    Expected<std::unique_ptr<recorder::RecorderThread>> thread =
        recorder::RecorderThread::start(settings.file, limits, time);
    if (!thread)
        return thread.error();
    return std::unique_ptr<ValueRecorder>(new ValueRecorder(std::move(*thread)));
}

Expected<void> ValueRecorder::checkDeadbands(const Plant& plant)
{
    const Expected<QVector<double>> deadbands = deadbandsOf(plant);
    return deadbands ? Expected<void>() : Expected<void>(deadbands.error());
}

Expected<void> ValueRecorder::add(const Plant& plant, qint64 time)
{
    const Expected<QVector<double>> deadbands = deadbandsOf(plant);
    if (!deadbands)
        return deadbands.error();
    FollowedValues& followed = m_followed[&plant];
    for (int i = 0; i < int(plant.recorded().size()); ++i) {
        const int slot = plant.recorded()[i];
        recorder::SeriesDescription series = recorder::describe(plant.point(slot), plant.name());
        if (recorder::isNumeric(series))
            series.deadband = deadbands->at(i);
        followed.follow(slot, m_thread->series(series));
    }
    m_thread->append(followed.forget(time), time);
    return {};
}

void ValueRecorder::sampled(const Plant& plant, const QVector<int>& changed, qint64 time)
{
    const auto found = m_followed.find(&plant);
    if (found == m_followed.end())
        return;
    look(time);
    const auto value = [&plant](int slot) -> const LiveValue& { return plant.value(slot); };
    m_thread->append(found->second.sampled(value, changed, time), time);
}

void ValueRecorder::passSecond(qint64 time)
{
    look(time);
    m_thread->append({}, time);
}

/// Behind a pause nothing is known, and nothing was in between.
void ValueRecorder::look(qint64 time)
{
    if (!m_attention.wasLost(time))
        return;
    m_thread->interrupt();
    QVector<recorder::Change> changes;
    for (auto& [plant, followed] : m_followed)
        changes += followed.forget(time);
    m_thread->append(changes, time);
}

} // namespace plc::panel
