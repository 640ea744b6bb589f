#include "cli/value_lines.h"

#include "cli/console.h"
#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::cli {

QString valueLine(const host::DataPoint& point, const QString& value)
{
    const QString line = QStringLiteral("%1 = %2").arg(point.text, value);
    return line + unitText(point);
}

QString addressText(const host::DataPoint& point)
{
    const QString place =
        QStringLiteral("area %1 %2 %3")
            .arg(point.area)
            .arg(values::isBit(*point.type) ? QStringLiteral("bit") : QStringLiteral("address"))
            .arg(point.address);
    return point.station == 0 ? place : place + QStringLiteral(" of station %1").arg(point.station);
}

QString unitText(const host::DataPoint& point)
{
    // A duration names its units itself.
    const bool isShown =
        !point.unit.isEmpty() && point.type->format != values::ValueFormat::Duration;
    return isShown ? QLatin1Char(' ') + point.unit : QString();
}

JsonLine& JsonLine::add(const char* name, const QString& text)
{
    return addJson(name, values::jsonText(text));
}

JsonLine& JsonLine::add(const char* name, qint64 number)
{
    return addJson(name, QString::number(number));
}

JsonLine& JsonLine::add(const char* name, double number, int decimals)
{
    return addJson(name, QString::number(number, 'f', decimals));
}

JsonLine& JsonLine::addFlag(const char* name, bool flag)
{
    return addJson(name, flag ? QStringLiteral("true") : QStringLiteral("false"));
}

JsonLine& JsonLine::addJson(const char* name, const QString& json)
{
    m_members.append(QStringLiteral("\"%1\":%2").arg(QString::fromLatin1(name), json));
    return *this;
}

JsonLine& JsonLine::addPoint(const host::DataPoint& point)
{
    add("label", point.text);
    add("type", QString::fromLatin1(point.type->name));
    if (!point.unit.isEmpty())
        add("unit", point.unit);
    return *this;
}

JsonLine& JsonLine::addOutcome(const host::TransferOutcome& outcome, const QString& text)
{
    add("outcome", host::outcomeWord(outcome.kind));
    if (!outcome.isDone())
        add("error", text);
    if (outcome.status > 0)
        add("status", qint64(outcome.status));
    return *this;
}

QString JsonLine::text() const
{
    return QLatin1Char('{') + m_members.join(QLatin1Char(',')) + QLatin1Char('}');
}

QString writeLine(const Assignment& assignment, const host::TransferOutcome& outcome)
{
    const QString value = host::pointText(assignment.point, assignment.values);
    const QString line = valueLine(assignment.point, value);
    const QString text = host::writeOutcomeText(assignment.point, outcome);
    if (outcome.isDone())
        return QStringLiteral("%1: %2").arg(line, text);
    return QStringLiteral("%1 (%2): %3").arg(line, addressText(assignment.point), text);
}

void addWrite(const Assignment& assignment, const host::TransferOutcome& outcome, JsonLine* line)
{
    line->addPoint(assignment.point);
    line->addJson("value", host::pointJson(assignment.point, assignment.values));
    line->addOutcome(outcome, host::writeOutcomeText(assignment.point, outcome));
    if (outcome.taken > 0)
        line->add("taken", qint64(outcome.taken));
}

void printRead(const ReadValue& read, bool json)
{
    const host::DataPoint& point = read.point;
    const bool isDone = read.outcome.isDone();
    const QVector<values::Value> values = host::decodeValues(point, read.bytes);
    if (json) {
        JsonLine line;
        line.addPoint(point);
        line.addJson("value", isDone ? host::pointJson(point, values) : QStringLiteral("null"));
        if (isDone && read.isPieced)
            line.addFlag("pieced", true);
        print(line.addOutcome(read.outcome, host::readOutcomeText(read.outcome)).text());
    } else if (isDone) {
        print(valueLine(point, host::pointText(point, values)));
    } else {
        complain(QStringLiteral("%1 (%2): %3")
                     .arg(point.text, addressText(point), host::readOutcomeText(read.outcome)));
    }
}

} // namespace plc::cli
