#include <QtCore/QHash>

#include <cmath>
#include <limits>

#include "recorder/elements.h"
#include "recorder/handover.h"

namespace plc::recorder {
namespace {

constexpr qint64 kNanosecondsAMillisecond = 1000000;

/// As the value of a tag, which has no line ends and does not end in a backslash.
QByteArray tagText(const QString& text)
{
    QByteArray escaped;
    for (char character : text.toUtf8()) {
        if (character == '\n' || character == '\r')
            character = ' ';
        if (character == ',' || character == ' ' || character == '=')
            escaped += '\\';
        escaped += character;
    }
    return escaped.endsWith('\\') ? escaped + "\\ " : escaped;
}

QByteArray textField(const QByteArray& text)
{
    QByteArray escaped = text;
    escaped.replace('\\', "\\\\").replace('"', "\\\"");
    return "text=\"" + escaped + '"';
}

QByteArray field(const values::Value& value)
{
    if (const bool* const flag = std::get_if<bool>(&value))
        return *flag ? "boolean=true" : "boolean=false";
    if (const qint64* const number = std::get_if<qint64>(&value))
        return "integer=" + QByteArray::number(*number) + 'i';
    if (const quint64* const number = std::get_if<quint64>(&value)) {
        if (*number > quint64(std::numeric_limits<qint64>::max()))
            return textField(QByteArray::number(*number));
        return "integer=" + QByteArray::number(*number) + 'i';
    }
    if (const QString* const text = std::get_if<QString>(&value))
        return textField(text->toUtf8());
    const double number = doubleOf(value).value_or(0);
    return std::isfinite(number) ? "real=" + numberText(number) : textField(numberText(number));
}

/// Names the series of a line: all before its fields, without the number of the element.
QByteArray head(const SeriesDescription& series)
{
    QByteArray head = "plc_value";
    if (!series.source.isEmpty())
        head += ",source=" + tagText(series.source);
    head += ",label=" + tagText(series.label);
    if (!series.unit.isEmpty())
        head += ",unit=" + tagText(series.unit);
    return head;
}

class Lines {
public:
    explicit Lines(const QVector<Series>& all) : m_series(seriesById(all))
    {
        for (const Series& series : all)
            m_heads.insert(series.id, head(series.description));
    }

    QByteArray of(const Change& change, qint64* rows)
    {
        const SeriesDescription series = m_series.value(change.series);
        const QByteArray head = m_heads.value(change.series);
        const QVector<values::Value> elements = knownElements(series, change.sample);
        const QByteArray quality = " quality=\"" + qualityWord(change.sample.quality) + '"';
        const QByteArray time = ' ' + QByteArray::number(timeOf(change)) + '\n';
        QByteArray lines;
        for (int i = 0; i < std::max(1, series.elements); ++i) {
            lines += head;
            if (series.elements > 1)
                lines += ",element=" + QByteArray::number(i);
            lines += quality;
            if (i < elements.size())
                lines += ',' + field(elements[i]);
            lines += time;
            ++*rows;
        }
        return lines;
    }

private:
    /// A second point of a series at one time would replace the first.
    qint64 timeOf(const Change& change)
    {
        qint64 time = change.sample.time * kNanosecondsAMillisecond;
        qint64& last = m_last[change.series];
        if (last >= time && last < time + kNanosecondsAMillisecond - 1)
            time = last + 1;
        last = time;
        return time;
    }

    const QHash<int, SeriesDescription> m_series;
    QHash<int, QByteArray> m_heads;
    QHash<int, qint64> m_last;
};

} // namespace

Expected<Handover> writeInfluxLines(Reader* reader, const TimeRange& range, const TakeText& take)
{
    const Expected<QVector<Series>> series = reader->series();
    if (!series)
        return series.error();
    Lines lines(*series);
    Handover handover;
    const Expected<void> done = reader->forEachChange(
        range, [&](const Change& change) { return take(lines.of(change, &handover.rows)); });
    if (!done)
        return done.error();
    return handover;
}

} // namespace plc::recorder
