#include "panel/alarms/alarm_settings.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QSet>

#include <cmath>

#include "values/iec_types.h"

namespace plc::panel {
namespace {

constexpr int kIdLetters = 16;

const values::IecType& typeOf(const values::Value& value)
{
    // In the order of the variant's alternatives.
    static const char* const kNames[] = {"BOOL", "LINT", "ULINT", "REAL", "LREAL", "STRING"};
    return *values::findIecType(std::string_view(kNames[value.index()]));
}

QString numberText(double number)
{
    return values::valueText(typeOf(values::Value(number)), number);
}

QString problemOf(const AlarmSettings& alarm)
{
    const bool hasLimit =
        alarm.condition == AlarmSettings::Above || alarm.condition == AlarmSettings::Below;
    if (alarm.label.isEmpty())
        return QStringLiteral("expected the label of a value");
    if (hasLimit && !std::isfinite(alarm.limit))
        return QStringLiteral("expected a finite limit");
    if (!std::isfinite(alarm.deadband) || alarm.deadband < 0)
        return QStringLiteral("expected a deadband of 0 or more");
    if (!hasLimit && alarm.deadband > 0)
        return QStringLiteral("only a limit (above, below) has a deadband");
    if (alarm.delay < 0)
        return QStringLiteral("expected a delay of 0 or more");
    if (alarm.condition == AlarmSettings::NotGood && alarm.delay == 0)
        return QStringLiteral("expected a delay: at a start no value is good yet");
    return {};
}

} // namespace

QString conditionText(const AlarmSettings& alarm)
{
    switch (alarm.condition) {
        case AlarmSettings::Above:
            return QStringLiteral("above ") + numberText(alarm.limit);
        case AlarmSettings::Below:
            return QStringLiteral("below ") + numberText(alarm.limit);
        case AlarmSettings::Is:
            return QStringLiteral("is ") + values::valueText(typeOf(alarm.state), alarm.state);
        default:
            return QStringLiteral("not good");
    }
}

QString alarmId(const AlarmSettings& alarm)
{
    const QStringList parts = {alarm.plc, alarm.label, conditionText(alarm)};
    const QByteArray name = parts.join(QChar(0)).toUtf8();
    const QByteArray hash = QCryptographicHash::hash(name, QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex().left(kIdLetters));
}

Expected<void> checkAlarms(const QVector<AlarmSettings>& alarms)
{
    QSet<QString> ids;
    for (const AlarmSettings& alarm : alarms) {
        QString problem = problemOf(alarm);
        if (problem.isEmpty() && ids.contains(alarmId(alarm)))
            problem = QStringLiteral("the alarm stands twice");
        if (!problem.isEmpty())
            return Error{QStringLiteral("%1: %2 %3: %4")
                             .arg(alarm.plc, alarm.label, conditionText(alarm), problem)};
        ids.insert(alarmId(alarm));
    }
    return {};
}

} // namespace plc::panel
