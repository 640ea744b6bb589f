#include "panel/access/audit_chain.h"

#include <QtCore/QDateTime>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstring>
#include <utility>

#include "exchange/flat_json.h"
#include "panel/access/secrets.h"
#include "values/utc_time.h"
#include "values/value_text.h"

namespace plc::panel {
namespace {

constexpr int kHashDigits = 64;
/// Characters behind the beginning of a text that is not told whole.
constexpr int kLongestSummary = kHashDigits + 48;
constexpr char kTimeKey[] = "{\"time\":\"";

QByteArray timeField(qint64 time)
{
    return kTimeKey + values::utcTimeText(time).toLatin1() + '"';
}

QByteArray chainFields(qint64 number, const QByteArray& previous)
{
    return ",\"n\":" + QByteArray::number(number) + ",\"previous\":\"" + previous + "\"}";
}

QByteArray textField(const char* name, const QString& text)
{
    const QByteArray value =
        text.isNull() ? QByteArray("null") : values::jsonText(auditText(text)).toUtf8();
    return QByteArray(",\"") + name + "\":" + value;
}

QString present(const QString& text)
{
    return text.isNull() ? QString(QLatin1String("")) : text;
}

QByteArray textOf(const exchange::FlatJson& json, const char* key)
{
    const exchange::JsonItem* item = json.member(key);
    if (!item || item->isList || item->values.isEmpty())
        return {};
    const QString* text = std::get_if<QString>(&item->values.first());
    return text ? text->toUtf8() : QByteArray();
}

qint64 numberOf(const exchange::FlatJson& json, const char* key)
{
    const exchange::JsonItem* item = json.member(key);
    if (!item || item->isList || item->values.isEmpty())
        return -1;
    const qint64* number = std::get_if<qint64>(&item->values.first());
    return number ? *number : -1;
}

/// A line that has nothing but this between its time and its place in the chain.
QRegularExpression lineWith(const QString& field)
{
    return QRegularExpression(
        QStringLiteral(
            "\\A\\{\"time\":\"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z"
            "\",%1,\"n\":[0-9]+,\"previous\":\"[0-9a-f]{64}\"\\}\\z")
            .arg(field));
}

/// Whether the bytes are its beginning, or all of it.
bool isPartOf(const QRegularExpression& line, const QByteArray& bytes)
{
    const QRegularExpressionMatch match =
        line.match(QString::fromLatin1(bytes), 0, QRegularExpression::PartialPreferCompleteMatch);
    return match.hasMatch() || match.hasPartialMatch();
}

} // namespace

QString auditText(const QString& text)
{
    if (int(text.size()) <= kLongestAuditText)
        return text;
    return QStringLiteral("%1… (%2 characters, SHA-256 %3)")
        .arg(text.left(kLongestAuditText - kLongestSummary))
        .arg(text.size())
        .arg(QString::fromLatin1(sha256(text.toUtf8())));
}

QByteArray recordLine(const AuditRecord& record, qint64 number, const QByteArray& previous)
{
    const bool isRequested = record.phase == AuditRecord::Requested;
    const std::pair<const char*, QString> fields[] = {
        {"action", present(record.action)},
        {"phase", isRequested ? QStringLiteral("requested") : QStringLiteral("outcome")},
        {"user", present(record.user)},
        {"address", present(record.address)},
        {"plc", present(record.plc)},
        {"label", present(record.label)},
        {"old", record.oldValue},
        {"seen", record.seenValue},
        {"new", record.newValue},
        {"id", present(record.id)},
        {"outcome", present(record.outcome)},
        {"reason", present(record.reason)}};
    QByteArray line = timeField(record.time);
    for (const auto& [name, text] : fields)
        line += textField(name, text);
    return line + chainFields(number, previous);
}

QByteArray beginningLine(qint64 time, bool isContinued, qint64 number, const QByteArray& previous)
{
    const char* begin = isContinued ? "continued" : "new";
    return timeField(time) + ",\"audit\":\"" + begin + '"' + chainFields(number, previous);
}

QByteArray cutLine(qint64 time, const QByteArray& cut, qint64 number, const QByteArray& previous)
{
    return timeField(time) + ",\"cut\":\"" + cut + '"' + chainFields(number, previous);
}

bool isCutBeginning(const QByteArray& bytes)
{
    static const QRegularExpression kBeginning =
        lineWith(QStringLiteral("\"audit\":\"(new|continued)\""));
    // Of fewer bytes nobody could say whose they are.
    return bytes.size() > int(std::strlen(kTimeKey)) && isPartOf(kBeginning, bytes);
}

bool isCutPart(const QByteArray& bytes)
{
    static const QRegularExpression kCut = lineWith(QStringLiteral("\"cut\":\"[0-9a-f]{64}\""));
    const QList<QByteArray> lines = bytes.split('\n');
    return std::all_of(lines.begin() + 1, lines.end(),
                       [](const QByteArray& line) { return isPartOf(kCut, line); });
}

std::optional<AuditLink> parseAuditLine(const QByteArray& line)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(line);
    if (!json || json->item)
        return std::nullopt;
    AuditLink link;
    link.number = numberOf(*json, "n");
    link.previous = textOf(*json, "previous");
    link.cut = textOf(*json, "cut");
    const QByteArray begin = textOf(*json, "audit");
    link.isBeginning = !begin.isEmpty();
    link.isContinued = begin == "continued";
    link.hash = sha256(line);
    if (link.number < 0 || link.previous.size() != kHashDigits)
        return std::nullopt;
    return link;
}

} // namespace plc::panel
