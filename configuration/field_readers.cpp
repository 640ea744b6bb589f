#include "configuration/field_readers.h"

#include <cmath>

#include "options/readers.h"
#include "values/duration_text.h"

namespace plc::configuration {

using project::JsonNode;
using project::JsonValue;

namespace {

// With the zero byte behind it, what sockaddr_un has room for.
constexpr int kLongestSocketPath = 107;
constexpr int kHighestPort = 65535;
constexpr qint64 kLargestSize = qint64(1) << 50;

QString lastWord(const QString& text)
{
    return text.mid(2); // behind "T#"
}

} // namespace

QString readNonEmpty(const JsonNode& node, const QString& expected)
{
    QString text = node.text();
    if (text.trimmed().isEmpty())
        node.failExpecting(expected);
    return text;
}

QString readPath(const JsonNode& node)
{
    QString path = readNonEmpty(node, QStringLiteral("a path"));
    if (path.contains(QChar(0)))
        node.failExpecting(QStringLiteral("a path"));
    return path;
}

QString readSocketPath(const JsonNode& node)
{
    QString path = readPath(node);
    if (path.toUtf8().size() > kLongestSocketPath)
        node.failExpecting(
            QStringLiteral("a path of a socket, of at most %1 bytes").arg(kLongestSocketPath));
    return path;
}

quint16 readPort(const JsonNode& node)
{
    return quint16(node.integer(1, kHighestPort));
}

int readDuration(const JsonNode& node, int lowest, int highest)
{
    std::optional<quint64> found;
    const double number = node.value().number();
    if (node.value().isText())
        found = values::parseDuration(QStringLiteral("T#") + node.value().text());
    else if (node.value().type() == JsonValue::Type::Number && number >= 0 &&
             number <= double(highest) && number == std::floor(number))
        found = quint64(number);
    if (found && *found >= quint64(lowest) && *found <= quint64(highest))
        return int(*found);
    node.failExpecting(
        QStringLiteral("a number of ms or a duration such as \"500ms\" or \"1m30s\", from %1 to %2")
            .arg(lastWord(values::durationText(quint64(lowest))),
                 lastWord(values::durationText(quint64(highest)))));
    return lowest;
}

qint64 readSize(const JsonNode& node, qint64 lowest)
{
    std::optional<qint64> found;
    const double number = node.value().number();
    if (node.value().isText())
        found = options::sizeOf(node.value().text());
    else if (number >= 0 && number <= double(kLargestSize) && number == std::floor(number))
        found = qint64(number);
    if (found && *found >= lowest && *found <= kLargestSize)
        return *found;
    node.failExpecting(
        QStringLiteral("a number of bytes or a text such as \"100M\", at least %1").arg(lowest));
    return lowest;
}

} // namespace plc::configuration
