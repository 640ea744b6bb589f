#include "panel/config/plc_reader.h"

#include <QtCore/QSet>

#include "configuration/field_readers.h"
#include "panel/config/settings.h"
#include "values/nearest_name.h"
#include "values/visible_text.h"

namespace plc::panel {

using project::JsonNode;

namespace {

constexpr int kShortestCycle = 10;                // ms
constexpr int kLongestTime = 24 * 60 * 60 * 1000; // ms
constexpr int kLongestName = 64;

QString readName(const JsonNode& node)
{
    QString name = node.text();
    if (name.trimmed().isEmpty() || name.size() > kLongestName)
        node.failExpecting(QStringLiteral("a name of 1 to %1 characters").arg(kLongestName));
    for (int i = 0; i < int(name.size()); ++i) {
        if (values::isObeyed(name[i].unicode()) || values::isLoneSurrogate(name, i))
            node.failExpecting(QStringLiteral("a name of characters that can be shown"));
    }
    return name;
}

values::Value readState(const JsonNode& node)
{
    if (node.value().isText())
        return node.text();
    if (node.value().type() == project::JsonValue::Type::Number)
        return node.number();
    return node.boolean();
}

void readCondition(const JsonNode& node, AlarmSettings* alarm)
{
    int conditions = 0;
    for (const char* key : {"above", "below", "is", "notGood"})
        conditions += node.has(key) ? 1 : 0;
    if (conditions != 1) {
        node.fail(QStringLiteral(
            "an alarm has one of the keys \"above\", \"below\", \"is\" and \"notGood\""));
        return;
    }
    if (node.has("above") || node.has("below")) {
        alarm->condition = node.has("above") ? AlarmSettings::Above : AlarmSettings::Below;
        alarm->limit = node.member(node.has("above") ? "above" : "below").number();
    } else if (node.has("is")) {
        alarm->condition = AlarmSettings::Is;
        alarm->state = readState(node.member("is"));
    } else {
        alarm->condition = AlarmSettings::NotGood;
        if (!node.member("notGood").boolean())
            node.member("notGood").failExpecting(QStringLiteral("true"));
    }
}

AlarmSettings readAlarm(const JsonNode& node, const QString& plc)
{
    node.checkKeys({"label"}, {"above", "below", "is", "notGood", "text", "deadband", "delay"});
    AlarmSettings alarm;
    if (!node.errors()->isEmpty())
        return alarm;
    alarm.plc = plc;
    alarm.label = configuration::readNonEmpty(node.member("label"), QStringLiteral("a label"));
    readCondition(node, &alarm);
    if (node.has("text"))
        alarm.text = node.member("text").text();
    if (node.has("deadband")) {
        alarm.deadband = node.member("deadband").number();
        if (!(alarm.deadband >= 0))
            node.member("deadband").failExpecting(QStringLiteral("a number of at least 0"));
    }
    if (node.has("delay"))
        alarm.delay = configuration::readDuration(node.member("delay"), 0, kLongestTime);
    return alarm;
}

/// How the PLC is read: what of it, how often, from where.
void readReading(const JsonNode& node, PlcSettings* plc)
{
    if (node.has("address"))
        plc->address = configuration::readNonEmpty(node.member("address"),
                                                   QStringLiteral("a host name or an IP address"));
    if (node.has("port"))
        plc->port = configuration::readPort(node.member("port"));
    if (node.has("cycle"))
        plc->cycleTime =
            configuration::readDuration(node.member("cycle"), kShortestCycle, kLongestTime);
    if (!node.has("record"))
        return;
    for (const JsonNode label : node.member("record").elements())
        plc->record.append(configuration::readLabels(label));
    if (plc->record.isEmpty())
        node.member("record").fail(QStringLiteral(
            "found no label, expected at least one; without the key it is what the project reads"));
}

PlcSettings readPlc(const JsonNode& node)
{
    node.checkKeys({"name", "project"},
                   {"address", "port", "cycle", "record", "deadband", "writable", "alarms"});
    PlcSettings plc;
    if (!node.errors()->isEmpty())
        return plc;
    plc.name = readName(node.member("name"));
    plc.project = configuration::readPath(node.member("project"));
    readReading(node, &plc);
    if (node.has("deadband")) {
        for (const JsonNode each : node.member("deadband").elements())
            plc.deadbands.append(configuration::readDeadband(each));
    }
    if (node.has("writable")) {
        plc.writable.emplace();
        for (const JsonNode each : node.member("writable").elements())
            plc.writable->append(configuration::readWritable(each));
    }
    if (node.has("alarms")) {
        for (const JsonNode each : node.member("alarms").elements())
            plc.alarms.append(readAlarm(each, plc.name));
        if (const Expected<void> isGood = checkAlarms(plc.alarms); !isGood)
            node.member("alarms").fail(isGood.error().text);
    }
    return plc;
}

} // namespace

QVector<PlcSettings> readPlcs(const JsonNode& list)
{
    QVector<PlcSettings> plcs;
    QSet<QString> names;
    for (const JsonNode node : list.elements()) {
        if (!node.errors()->isEmpty())
            return plcs;
        plcs.append(readPlc(node));
        const QString name = plcs.last().name;
        if (names.contains(name))
            node.member("name").fail(
                QStringLiteral("two PLCs are called %1").arg(values::quoted(name)));
        names.insert(name);
    }
    if (plcs.isEmpty())
        list.fail(QStringLiteral("found no PLC, expected at least one"));
    if (plcs.size() > kMostPlcs)
        list.fail(
            QStringLiteral("found %1 PLCs, expected at most %2").arg(plcs.size()).arg(kMostPlcs));
    return plcs;
}

} // namespace plc::panel
