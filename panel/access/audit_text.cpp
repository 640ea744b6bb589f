#include "panel/access/audit_text.h"

#include "exchange/flat_json.h"
#include "values/visible_text.h"

namespace plc::panel {
namespace {

/// Empty where there is none, or null.
QString memberText(const exchange::FlatJson& json, const char* key)
{
    const QString* text = json.text(key);
    return text ? *text : QString();
}

QString subjectOf(const exchange::FlatJson& json)
{
    QString text = memberText(json, "action");
    for (const char* key : {"plc", "label"}) {
        const QString part = memberText(json, key);
        text += part.isEmpty() ? QString() : QLatin1Char(' ') + part;
    }
    if (!json.text("new"))
        return text;
    const QString* old = json.text("old");
    return text +
           QStringLiteral(" from %1 to %2")
               .arg(old ? *old : QStringLiteral("what is not known"), memberText(json, "new"));
}

QString recordText(const exchange::FlatJson& json)
{
    const QString user = memberText(json, "user");
    const bool isRequested = memberText(json, "phase") == QLatin1String("requested");
    QString text =
        QStringLiteral("%1 at %2: %3, %4")
            .arg(user.isEmpty() ? QStringLiteral("(nobody)") : user, memberText(json, "address"),
                 subjectOf(json),
                 isRequested ? QStringLiteral("asked for") : memberText(json, "outcome"));
    if (const QString reason = memberText(json, "reason"); !reason.isEmpty())
        text += QStringLiteral(" (%1)").arg(reason);
    return text;
}

} // namespace

QString auditLineText(const QByteArray& line)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(line);
    if (!json || !json->text("time"))
        return values::visibleText(QString::fromUtf8(line));
    QString text;
    if (json->text("audit"))
        text = QStringLiteral("the audit begins (%1)").arg(memberText(*json, "audit"));
    else if (json->text("cut"))
        text = QStringLiteral("a process or a disk ended within the line before");
    else
        text = recordText(*json);
    return values::visibleText(memberText(*json, "time") + QLatin1Char(' ') + text);
}

} // namespace plc::panel
