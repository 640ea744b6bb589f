#include "panel/api/alarm_json.h"

#include <cmath>

#include "panel/api/json_text.h"

namespace plc::panel {
namespace {

void appendTimeMember(const char* key, const std::optional<qint64>& time, QByteArray* json)
{
    appendKey(key, json);
    appendTime(time.value_or(0), json);
}

/// The type that a value of an alarm which is not configured any more may have had.
const values::IecType& widestType(const values::Value& value)
{
    static const char* const kNames[] = {"BOOL", "LINT", "ULINT", "REAL", "LREAL", "STRING"};
    return *values::findIecType(std::string_view(kNames[value.index()]));
}

void appendValueMember(const std::optional<values::Value>& value, const values::IecType* type,
                       QByteArray* json)
{
    appendKey("value", json);
    if (!value) {
        json->append("null");
        return;
    }
    host::DataPoint point;
    point.type = type ? type : &widestType(*value);
    json->append(valueText(point, {*value}));
}

/// What an alarm has while it is there, or nulls.
void appendOccurrence(const std::optional<AlarmOccurrence>& found, const values::IecType* type,
                      QByteArray* json)
{
    const AlarmOccurrence occurrence = found.value_or(AlarmOccurrence());
    appendTimeMember("since", found ? std::optional<qint64>(found->begin) : std::nullopt, json);
    appendTimeMember("ended", occurrence.end, json);
    appendValueMember(occurrence.value, type, json);
    if (occurrence.acknowledgedAt) {
        appendMember("acknowledgedBy", occurrence.acknowledgedBy, json);
    } else {
        appendKey("acknowledgedBy", json);
        json->append("null");
    }
    appendTimeMember("acknowledgedAt", occurrence.acknowledgedAt, json);
    appendTruth("beginUnseen", occurrence.isBeginUnseen, json);
    appendTruth("endUnseen", occurrence.isEndUnseen, json);
    appendTruth("gap", occurrence.hasGap, json);
    appendTruth("restart", occurrence.hasRestart, json);
}

} // namespace

QByteArray alarmText(const AlarmSettings& alarm, const QString& id, const AlarmStatus& status,
                     const values::IecType& type)
{
    QByteArray json = "{";
    appendMember("id", id, &json);
    appendMember("plc", alarm.plc, &json);
    appendMember("label", alarm.label, &json);
    appendMember("text", alarm.text, &json);
    appendMember("condition", conditionText(alarm), &json);
    appendMember("state", alarmStateText(status.state), &json);
    appendTimeMember("unknownSince", status.unknownSince, &json);
    appendOccurrence(status.occurrence, &type, &json);
    appendMember("unacknowledgedBefore", status.unacknowledgedBefore, &json);
    return json.append('}');
}

QByteArray pastAlarmText(const AlarmOccurrence& occurrence, AlarmState state,
                         const values::IecType* type)
{
    QByteArray json = "{";
    appendMember("id", occurrence.alarm, &json);
    appendMember("plc", occurrence.plc, &json);
    appendMember("label", occurrence.label, &json);
    appendMember("text", occurrence.text, &json);
    appendMember("condition", occurrence.condition, &json);
    appendMember("state", alarmStateText(state), &json);
    appendOccurrence(occurrence, type, &json);
    appendTruth("watchLost", occurrence.isWatchLost, &json);
    return json.append('}');
}

QByteArray pastAlarmsText(const QVector<PastAlarm>& past)
{
    QByteArray json = "{\"alarms\":[";
    for (const PastAlarm& alarm : past)
        json.append(json.endsWith('[') ? "" : ",")
            .append(pastAlarmText(alarm.occurrence, alarm.state, alarm.type));
    return json.append("]}\n");
}

} // namespace plc::panel
