#include <QtCore/QHash>
#include <QtCore/QMap>

#include <functional>

#include "recorder/elements.h"
#include "recorder/handover.h"
#include "recorder/timeline.h"
#include "values/prometheus_label.h"

namespace plc::recorder {
namespace {

QByteArray sampleName(const char* metric, const SeriesDescription& series, int element)
{
    QByteArray name = QByteArray(metric) + "{source=\"" + values::prometheusLabel(series.source) +
                      "\",label=\"" + values::prometheusLabel(series.label) + "\",unit=\"" +
                      values::prometheusLabel(series.unit) + '"';
    if (series.elements > 1)
        name += ",element=\"" + QByteArray::number(element) + '"';
    return name + "} ";
}

QByteArray valueText(const values::Value& value)
{
    if (const bool* const flag = std::get_if<bool>(&value))
        return *flag ? "1" : "0";
    if (const qint64* const number = std::get_if<qint64>(&value))
        return QByteArray::number(*number);
    if (const quint64* const number = std::get_if<quint64>(&value))
        return QByteArray::number(*number);
    const QByteArray text = numberText(doubleOf(value).value_or(0));
    return text == "nan" ? "NaN" : text == "inf" ? "+Inf" : text == "-inf" ? "-Inf" : text;
}

/// Seconds with their milliseconds.
QByteArray secondsText(qint64 time)
{
    const qint64 seconds = time >= 0 ? time / 1000 : (time - 999) / 1000;
    return QByteArray::number(seconds) + '.' +
           QByteArray::number(time - seconds * 1000).rightJustified(3, '0');
}

QByteArray head(const char* metric, const char* meaning)
{
    return QByteArray("# HELP ") + metric + ' ' + meaning + "\n# TYPE " + metric + " gauge\n";
}

constexpr char kValueMeaning[] = "Values of PLCs while they are known.";
constexpr char kGoodMeaning[] = "1 while the value is known, 0 while it is not.";

/// A text is no number, and its series has no place.
bool isText(const SeriesDescription& series)
{
    return series.type && values::isText(*series.type);
}

/// What all names of a series have in common. Several series may have it: those of one label
/// whose deadband, or whose type was changed. One name has one place and its times in order.
QByteArray nameOf(const SeriesDescription& series)
{
    SeriesDescription whole = series;
    whole.elements = 1;
    return sampleName("", whole, 0);
}

/// Rows of names, of which each has one at a time: the last that was given.
class Rows {
public:
    void add(const QByteArray& name, qint64 time, const QByteArray& value)
    {
        if (!m_rows.contains(name))
            m_names.append(name);
        m_rows[name].insert(time, value);
    }
    void addUnlessThere(const QByteArray& name, qint64 time, const QByteArray& value)
    {
        if (!m_rows.value(name).contains(time))
            add(name, time, value);
    }
    /// False when no more can be taken.
    bool visit(const std::function<bool(const QByteArray&, qint64, const QByteArray&)>& take) const
    {
        for (const QByteArray& name : m_names) {
            const QMap<qint64, QByteArray> rows = m_rows[name];
            for (auto row = rows.constBegin(); row != rows.constEnd(); ++row) {
                if (!take(name, row.key(), *row))
                    return false;
            }
        }
        return true;
    }

private:
    QVector<QByteArray> m_names;
    QHash<QByteArray, QMap<qint64, QByteArray>> m_rows;
};

/// Gives the samples of a series with those of one time made one, the last.
template <typename Visit>
bool visitLastOfEachTime(const QVector<Sample>& samples, Visit visit)
{
    for (int i = 0; i < samples.size(); ++i) {
        const bool isLast = i + 1 == samples.size() || samples[i + 1].time != samples[i].time;
        if (isLast && !visit(samples[i]))
            return false;
    }
    return true;
}

/// Of several series of one name the one that goes on.
QVector<LastValue> oneOfEachName(const QVector<LastValue>& values)
{
    QVector<LastValue> chosen;
    QHash<QByteArray, int> places;
    for (const LastValue& value : values) {
        const QByteArray name = nameOf(value.series);
        const auto place = places.constFind(name);
        if (place == places.constEnd()) {
            places.insert(name, int(chosen.size()));
            chosen.append(value);
        } else if (!isGap(value.sample) || isGap(chosen[*place].sample)) {
            chosen[*place] = value;
        }
    }
    return chosen;
}

class OpenMetrics {
public:
    OpenMetrics(Reader* reader, const TimeRange& range, const TakeText& take)
        : m_reader(reader), m_range(range), m_take(take)
    {
    }

    Expected<void> write(const QVector<Series>& all)
    {
        QVector<int> ids;
        for (const Series& series : all)
            ids.append(series.id);
        Expected<void> done;
        const Expected<void> isRead = m_reader->inOneState(ids, [&] { done = writeAll(all); });
        return isRead ? done : isRead;
    }
    const Handover& handover() const { return m_handover; }

private:
    Expected<void> writeAll(const QVector<Series>& all)
    {
        QVector<QByteArray> names;
        QHash<QByteArray, QVector<Series>> groups;
        for (const Series& series : all) {
            const QByteArray name = nameOf(series.description);
            if (!groups.contains(name))
                names.append(name);
            groups[name].append(series);
        }
        m_take(head("plc_value", kValueMeaning));
        for (const QByteArray& name : names) {
            if (Expected<void> done = writeValues(groups[name]); !done)
                return done;
        }
        m_take(head("plc_good", kGoodMeaning));
        for (const QByteArray& name : names) {
            if (Expected<void> done = writeGood("plc_good" + name, groups[name]); !done)
                return done;
        }
        m_take("# EOF\n");
        return {};
    }
    using TakeRow =
        std::function<bool(const QByteArray& name, qint64 time, const QByteArray& value)>;

    /// Each element is a metric, whose samples stand together. What is of one series alone, as
    /// nearly all is, needs no memory for its rows.
    Expected<void> writeValues(const QVector<Series>& group)
    {
        Rows rows;
        const TakeRow keep = [&](const QByteArray& name, qint64 time, const QByteArray& value) {
            rows.add(name, time, value);
            return true;
        };
        const TakeRow write = writeRows();
        for (const Series& series : group) {
            const Expected<History> history =
                m_reader->changes(series.id, m_range.from, m_range.to);
            if (!history)
                return history.error();
            for (int i = 0; i < series.description.elements; ++i)
                giveElement(series, i, *history, group.size() == 1 ? write : keep);
        }
        rows.visit(write);
        return {};
    }
    void giveElement(const Series& series, int element, const History& history, const TakeRow& take)
    {
        const QByteArray name = sampleName("plc_value", series.description, element);
        visitLastOfEachTime(history.samples, [&](const Sample& sample) {
            const QVector<values::Value> known = knownElements(series.description, sample);
            if (element >= known.size())
                return true;
            if (doubleOf(known[element]))
                return take(name, sample.time, valueText(known[element]));
            ++m_handover.leftOut;
            return true;
        });
    }
    Expected<void> writeGood(const QByteArray& name, const QVector<Series>& group)
    {
        Rows rows;
        const TakeRow write = writeRows();
        for (const Series& series : group) {
            if (isText(series.description))
                continue;
            const Expected<History> history =
                m_reader->changes(series.id, m_range.from, m_range.to);
            if (!history)
                return history.error();
            visitLastOfEachTime(history->samples, [&](const Sample& sample) {
                const QByteArray value = sample.quality == Quality::Good ? "1" : "0";
                if (group.size() == 1)
                    return write(name, sample.time, value);
                // Where one of them ends another one may begin.
                if (isGap(sample))
                    rows.addUnlessThere(name, sample.time, value);
                else
                    rows.add(name, sample.time, value);
                return true;
            });
        }
        rows.visit(write);
        return {};
    }
    TakeRow writeRows()
    {
        return [this](const QByteArray& name, qint64 time, const QByteArray& value) {
            return writeRow(name, time, value);
        };
    }
    bool writeRow(const QByteArray& name, qint64 time, const QByteArray& value)
    {
        ++m_handover.rows;
        return m_take(name + value + ' ' + secondsText(time) + '\n');
    }

    Reader* const m_reader;
    const TimeRange m_range;
    const TakeText& m_take;
    Handover m_handover;
};

} // namespace

Expected<Handover> writeOpenMetrics(Reader* reader, const TimeRange& range, const TakeText& take)
{
    const Expected<QVector<Series>> series = reader->series();
    if (!series)
        return series.error();
    OpenMetrics metrics(reader, range, take);
    if (const Expected<void> done = metrics.write(*series); !done)
        return done.error();
    return metrics.handover();
}

QByteArray expositionText(const QVector<LastValue>& all, Handover* handover)
{
    const QVector<LastValue> values = oneOfEachName(all);
    Handover count;
    QByteArray text = head("plc_value", kValueMeaning);
    for (const LastValue& last : values) {
        const QVector<values::Value> known = knownElements(last.series, last.sample);
        for (int i = 0; i < known.size(); ++i) {
            const bool isNumber = doubleOf(known[i]).has_value();
            ++(isNumber ? count.rows : count.leftOut);
            if (isNumber)
                text += sampleName("plc_value", last.series, i) + valueText(known[i]) + '\n';
        }
    }
    text += head("plc_good", kGoodMeaning);
    for (const LastValue& last : values) {
        if (isText(last.series))
            continue;
        SeriesDescription whole = last.series;
        whole.elements = 1;
        ++count.rows;
        text += sampleName("plc_good", whole, 0);
        text += last.sample.quality == Quality::Good ? "1\n" : "0\n";
    }
    if (handover)
        *handover = count;
    return text;
}

Expected<Handover> writeExposition(Reader* reader, const TakeText& take)
{
    const Expected<QVector<Series>> series = reader->series();
    const Expected<QVector<Change>> last = reader->lastValues();
    if (!series)
        return series.error();
    if (!last)
        return last.error();
    const QHash<int, SeriesDescription> byId = seriesById(*series);
    QVector<LastValue> values;
    for (const Change& change : *last)
        values.append({byId[change.series], change.sample});
    Handover handover;
    take(expositionText(values, &handover));
    return handover;
}

} // namespace plc::recorder
