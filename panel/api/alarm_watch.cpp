#include "panel/api/alarm_watch.h"

#include <QtCore/QSet>

#include "host/points/value_codec.h"
#include "panel/api/alarm_json.h"

namespace plc::panel {
namespace {

bool fits(const AlarmSettings& alarm, const values::IecType& type)
{
    const bool isTruth = type.format == values::ValueFormat::Boolean;
    const bool isNumber = !isTruth && !values::isText(type);
    switch (alarm.condition) {
        case AlarmSettings::Above:
        case AlarmSettings::Below:
            return isNumber;
        case AlarmSettings::Is:
            if (std::holds_alternative<bool>(alarm.state))
                return isTruth;
            return std::holds_alternative<QString>(alarm.state) ? values::isText(type) : isNumber;
        default:
            return true;
    }
}

Error problem(const AlarmSettings& alarm, const QString& text)
{
    return {QStringLiteral("%1: the alarm %2 %3: %4")
                .arg(alarm.plc, alarm.label, conditionText(alarm), text)};
}

} // namespace

Expected<void> AlarmWatch::check(const Plant& plant)
{
    for (const AlarmSettings& alarm : plant.settings().alarms) {
        const Expected<host::DataPoint> point = plant.find(alarm.label);
        if (!point)
            return problem(alarm, point.error().text);
        if (point->elements > 1)
            return problem(alarm, QStringLiteral("expected one value, not several"));
        if (!fits(alarm, *point->type))
            return problem(alarm, QStringLiteral("the value is %1, which is never so")
                                      .arg(QLatin1String(point->type->name)));
    }
    return {};
}

AlarmWatch::AlarmWatch(Plants* plants, AlarmDesk* desk, Clock time, Tell tell)
    : m_plants(plants), m_desk(desk), m_time(std::move(time)), m_tell(std::move(tell))
{
}

void AlarmWatch::begin()
{
    m_watched.clear();
    for (const AlarmSettings& alarm : m_desk->engine().alarms()) {
        Plant* const plant = m_plants->find(alarm.plc);
        if (!plant)
            continue;
        const Expected<host::DataPoint> point = plant->find(alarm.label);
        if (!point)
            continue;
        const Watched watched{plant->want(*point), alarm.label};
        m_watched[plant].append(watched);
        observe(*plant, watched);
    }
    settle();
}

void AlarmWatch::sampled(Plant* plant, const QVector<int>& changed)
{
    const auto found = m_watched.find(plant);
    if (found == m_watched.end())
        return;
    const QSet<int> changedSlots(changed.begin(), changed.end());
    for (const Watched& watched : std::as_const(found->second)) {
        if (changedSlots.contains(watched.slot))
            observe(*plant, watched);
    }
    if (const std::optional<Moment>& confirmed = plant->confirmed())
        m_desk->confirm(plant->name(), *confirmed);
    settle();
}

void AlarmWatch::observe(const Plant& plant, const Watched& watched)
{
    const LiveValue& value = plant.value(watched.slot);
    AlarmObservation observation;
    observation.moment = m_time();
    if (value.quality == Quality::Good && value.wasRead()) {
        observation.value = host::decodeValue(plant.point(watched.slot), value.bytes);
        observation.moment = value.moment();
    }
    m_desk->take(plant.name(), watched.label, observation);
}

void AlarmWatch::settle()
{
    const QVector<int> changed = m_desk->settle(m_time());
    for (const int alarm : changed)
        m_tell(one(alarm));
}

const values::IecType* AlarmWatch::typeOf(const QString& plc, const QString& label) const
{
    const Plant* const plant = m_plants->find(plc);
    const Expected<host::DataPoint> point =
        plant ? plant->find(label) : Expected<host::DataPoint>(Error{});
    return point ? point->type : nullptr;
}

QByteArray AlarmWatch::one(int alarm) const
{
    const AlarmEngine& engine = m_desk->engine();
    const AlarmSettings& settings = engine.alarms()[alarm];
    const values::IecType* type = typeOf(settings.plc, settings.label);
    static const values::IecType* const kUnknown = values::findIecType(std::string_view("LREAL"));
    return alarmText(settings, engine.id(alarm), engine.status(alarm), type ? *type : *kUnknown);
}

QByteArray AlarmWatch::list() const
{
    QByteArray json = "{\"alarms\":[";
    for (int i = 0; i < int(m_desk->engine().alarms().size()); ++i)
        json.append(i == 0 ? "" : ",").append(one(i));
    return json.append("]}\n");
}

void AlarmWatch::acknowledge(const QString& id, qint64 begin, const QString& user,
                             AlarmDesk::Answered answered)
{
    m_desk->acknowledge(id, begin, user, m_time(), std::move(answered));
}

void AlarmWatch::history(qint64 from, qint64 to, int most, Past past)
{
    m_desk->between(
        from, to, most,
        [this, past = std::move(past)](const Expected<QVector<AlarmOccurrence>>& found) {
            if (found)
                past(pastOf(*found));
            else
                past(found.error());
        });
}

QVector<PastAlarm> AlarmWatch::pastOf(const QVector<AlarmOccurrence>& occurrences) const
{
    QVector<PastAlarm> past;
    QHash<QPair<QString, QString>, const values::IecType*> types;
    for (const AlarmOccurrence& occurrence : occurrences) {
        const int alarm = m_desk->engine().find(occurrence.alarm);
        AlarmState state = AlarmState::Ended;
        if (!occurrence.end)
            state = alarm < 0 ? AlarmState::Unknown : m_desk->engine().status(alarm).state;
        const QPair<QString, QString> place(occurrence.plc, occurrence.label);
        if (!types.contains(place))
            types.insert(place, typeOf(occurrence.plc, occurrence.label));
        past.append({occurrence, state, types.value(place)});
    }
    return past;
}

} // namespace plc::panel
