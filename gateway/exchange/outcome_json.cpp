#include "gateway/exchange/outcome_json.h"

#include <QtCore/QDateTime>

#include "values/utc_time.h"
#include "values/value_text.h"

namespace plc::gateway {
namespace {

void append(const char* key, const QString& value, QString* members)
{
    if (value.isEmpty())
        return;
    if (!members->isEmpty())
        *members += QLatin1Char(',');
    *members += QStringLiteral("\"%1\":").arg(QLatin1String(key)) + values::jsonText(value);
}

} // namespace

QString outcomeJson(const WriteOutcome& outcome, const QString& device)
{
    QString members;
    append("id", outcome.id, &members);
    append("device", device, &members);
    append("name", outcome.name, &members);
    append("value", outcome.value, &members);
    append("outcome", outcomeWord(outcome.kind), &members);
    append("reason", outcome.reason, &members);
    append("time", values::utcTimeText(outcome.time), &members);
    return QLatin1Char('{') + members + QLatin1Char('}');
}

} // namespace plc::gateway
