#include "panel/api/alarm_feed.h"

#include "host/points/value_codec.h"
#include "panel/api/json_text.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

/// Browsers lose digits of larger integers.
constexpr quint64 kLargestPlain = quint64(1) << 53;

void appendAlarmValue(const std::optional<values::Value>& value, QByteArray* json)
{
    appendKey("value", json);
    if (!value) {
        json->append("null");
        return;
    }
    const qint64* whole = std::get_if<qint64>(&*value);
    const quint64* natural = std::get_if<quint64>(&*value);
    const bool isLarge =
        (whole && (*whole > qint64(kLargestPlain) || *whole < -qint64(kLargestPlain))) ||
        (natural && *natural > kLargestPlain);
    const QByteArray text = values::valueJson(*value).toUtf8();
    json->append(isLarge ? '"' + text + '"' : text);
}

void appendTimeMember(const char* key, const std::optional<qint64>& time, QByteArray* json)
{
    appendKey(key, json);
    appendTime(time.value_or(0), json);
}

void appendTextOrNone(const char* key, const QString& text, QByteArray* json)
{
    appendKey(key, json);
    if (text.isEmpty())
        json->append("null");
    else
        appendText(text, json);
}

void appendOccurrence(const AlarmOccurrence& occurrence, QByteArray* json)
{
    appendTimeMember("since", occurrence.begin, json);
    appendTimeMember("ended", occurrence.end, json);
    appendAlarmValue(occurrence.value, json);
    appendTextOrNone("acknowledgedBy", occurrence.acknowledgedBy, json);
    appendTimeMember("acknowledgedAt", occurrence.acknowledgedAt, json);
    const struct {
        const char* name;
        bool isSet;
    } flags[] = {{"beginUnseen", occurrence.isBeginUnseen},
                 {"endUnseen", occurrence.isEndUnseen},
                 {"gap", occurrence.hasGap},
                 {"restart", occurrence.hasRestart},
                 {"watchLost", occurrence.isWatchLost}};
    for (const auto& flag : flags) {
        if (!flag.isSet)
            continue;
        appendKey(flag.name, json);
        json->append("true");
    }
}

} // namespace

Expected<std::unique_ptr<AlarmFeed>> AlarmFeed::start(const Plants& plants, const QString& file,
                                                      qint64 now, Tell tell)
{
    std::unique_ptr<AlarmFeed> feed(new AlarmFeed);
    feed->m_tell = std::move(tell);
    QVector<AlarmSettings> alarms;
    for (const std::unique_ptr<Plant>& plant : plants) {
        alarms += plant->settings().alarms;
        if (const Expected<void> followed = feed->follow(plant.get()); !followed)
            return followed.error();
    }
    std::unique_ptr<AlarmHistory> history;
    if (!file.isEmpty() && !alarms.isEmpty()) {
        Expected<std::unique_ptr<AlarmHistory>> opened = AlarmHistory::open(file, {});
        if (!opened)
            return opened.error();
        history = std::move(*opened);
    }
    Expected<std::unique_ptr<AlarmDesk>> desk = AlarmDesk::open(alarms, std::move(history), now);
    if (!desk)
        return desk.error();
    feed->m_desk = std::move(*desk);
    return feed;
}

Expected<void> AlarmFeed::follow(Plant* plant)
{
    for (const AlarmSettings& alarm : plant->settings().alarms) {
        const Expected<host::DataPoint> point = plant->find(alarm.label);
        const QString name = values::quoted(plant->name());
        if (!point)
            return Error{QStringLiteral("PLC %1: alarms: %2").arg(name, point.error().text)};
        if (point->elements > 1)
            return Error{QStringLiteral("PLC %1: alarms: %2 is a list; an alarm watches one value")
                             .arg(name, alarm.label)};
        m_labels[plant].insert(plant->want(*point), alarm.label);
    }
    return {};
}

void AlarmFeed::sampled(const Plant& plant, const QVector<int>& changed, qint64 now)
{
    const QHash<int, QString> labels = m_labels.value(&plant);
    if (labels.isEmpty())
        return;
    for (const int slot : changed) {
        const auto label = labels.constFind(slot);
        if (label == labels.constEnd())
            continue;
        const LiveValue& value = plant.value(slot);
        AlarmObservation observation;
        observation.time = now;
        if (value.quality == Quality::Good) {
            observation.value = host::decodeValue(plant.point(slot), value.bytes);
            observation.time = value.time;
        }
        m_desk->take(plant.name(), *label, observation);
    }
    if (plant.confirmed())
        m_desk->confirm(plant.name(), *plant.confirmed());
    settle(now);
}

void AlarmFeed::settle(qint64 now)
{
    for (const int alarm : m_desk->settle(now))
        m_tell(alarmText(m_desk->engine(), alarm));
}

QByteArray alarmText(const AlarmEngine& engine, int alarm)
{
    const AlarmSettings& settings = engine.alarms()[alarm];
    const AlarmStatus status = engine.status(alarm);
    QByteArray json = "{";
    appendMember("id", engine.id(alarm), &json);
    appendMember("plc", settings.plc, &json);
    appendMember("label", settings.label, &json);
    appendMember("text", settings.text, &json);
    appendMember("condition", conditionText(settings), &json);
    appendMember("state", alarmStateText(status.state), &json);
    appendTimeMember("unknownSince", status.unknownSince, &json);
    appendMember("unacknowledgedBefore", status.unacknowledgedBefore, &json);
    appendOccurrence(status.occurrence.value_or(AlarmOccurrence()), &json);
    return json.append('}');
}

QByteArray occurrenceText(const AlarmOccurrence& occurrence)
{
    QByteArray json = "{";
    appendMember("id", occurrence.alarm, &json);
    appendMember("plc", occurrence.plc, &json);
    appendMember("label", occurrence.label, &json);
    appendMember("text", occurrence.text, &json);
    appendMember("condition", occurrence.condition, &json);
    appendOccurrence(occurrence, &json);
    return json.append('}');
}

} // namespace plc::panel
