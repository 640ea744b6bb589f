// Recordings at random, against a model that knows what was held at each millisecond.

#include <cmath>
#include <limits>

#include "tests/recorder/recording.h"
#include "tests/support/random.h"

namespace plc::recorder {
namespace test {
namespace {

constexpr int kTimes = 400; // ms of the model

/// What one series held, ms by ms: for each the samples that begin there.
class Model {
public:
    Model() : m_begun(kTimes) {}

    /// From here on it is as this tells, whatever was recorded before.
    void set(const Sample& sample)
    {
        for (int time = int(sample.time) + 1; time < kTimes; ++time)
            m_begun[time].clear();
        m_begun[int(sample.time)].append(sample);
    }
    Sample heldBefore(int time) const
    {
        while (--time >= 0) {
            if (!m_begun[time].isEmpty())
                return m_begun[time].last();
        }
        return {0, Quality::Gap, {}};
    }
    /// Those of a range, of gaps in a row the first.
    QVector<Sample> samples(int from, int to) const
    {
        QVector<Sample> samples;
        Sample last = heldBefore(from);
        for (int time = from; time < to; ++time) {
            for (const Sample& sample : m_begun[time]) {
                if (sample.quality != Quality::Gap || last.quality != Quality::Gap)
                    samples.append(sample);
                last = sample;
            }
        }
        return samples;
    }
    /// An aggregate with values of the series' type, which have all of their digits.
    struct Wanted : Aggregate {
        std::optional<values::Value> least;
        std::optional<values::Value> most;
    };
    Wanted aggregate(const SeriesDescription& series, int from, int to) const
    {
        const SeriesNumbers numbers(series);
        long double sum = 0;
        Wanted result;
        int known = 0;
        QVector<int> others(4); // ms that it was stale, bad, not recorded, no number
        const auto take = [&](const Sample& sample, int duration) {
            const std::optional<double> number = numbers.number(sample.bytes);
            if (sample.quality != Quality::Good || !number) {
                others[sample.quality == Quality::Good ? 3 : int(sample.quality) - 1] += duration;
                return;
            }
            const values::Value value = seriesValues(series, sample.bytes).first();
            if (!result.least || value < *result.least)
                result.least = value;
            if (!result.most || *result.most < value)
                result.most = value;
            sum += static_cast<long double>(*number) * duration;
            known += duration;
        };
        for (int time = from; time < to; ++time) {
            for (const Sample& sample : m_begun[time])
                take(sample, 0);
            take(heldBefore(time + 1), 1);
        }
        result.mean = double(sum / known);
        result.coverage = double(known) / (to - from);
        for (int i = 0, most = 0; i < int(others.size()); ++i) {
            if (others[i] <= most)
                continue;
            most = others[i];
            result.rest = Knowledge(i + 1);
        }
        return result;
    }

private:
    QVector<QVector<Sample>> m_begun;
};

class RandomHistory : public Recording {
protected:
    /// One recording of a few series, with everything that can come between.
    void run(std::uint32_t seed)
    {
        m_random = plc::test::Random(seed);
        m_limits.unsorted = m_random.between(1, 600);
        m_now = m_random.below(50);
        m_models = QVector<Model>(kSeries);
        m_held.clear();
        m_recorder = open(m_now, m_limits);
        ASSERT_TRUE(m_recorder);
        begin();
        const int steps = m_random.between(1, 60);
        for (int i = 0; i < steps; ++i)
            step();
        ASSERT_TRUE(m_recorder->end(m_now));
        closed();
        compare();
        m_recorder.reset();
        for (const QString& name : {file, file + QStringLiteral("-wal")})
            QFile::remove(name);
    }

private:
    static constexpr int kSeries = 5;

    void begin()
    {
        m_descriptions = {ofType("P.a", "INT"), ofType("P.b", "REAL"), ofType("P.c", "STRING"),
                          ofType("P.d", "LINT"), ofType("P.e", "ULINT")};
        m_descriptions[2].stringLength = 900;
        m_ids.clear();
        for (const SeriesDescription& description : m_descriptions)
            m_ids.append(m_recorder->series(description));
    }
    void closed()
    {
        for (Model& model : m_models)
            model.set(gap(m_now));
        m_held.clear();
    }
    void begun(qint64 time)
    {
        for (int i = 0; i < kSeries; ++i) {
            m_models[i].set(gap(time));
            if (m_held.contains(i) && m_held[i].quality != Quality::Gap)
                m_models[i].set({time, m_held[i].quality, m_held[i].bytes});
        }
    }
    /// Near the ends of 64 bits, of their half and of the digits of a double.
    QByteArray longBytes()
    {
        const quint64 base = quint64(m_random.below(4)) << 62;
        const quint64 value =
            base + (m_random.oneIn(2) ? quint64(1) << 53 : 0) + quint64(m_random.below(5)) - 2;
        QByteArray bytes(8, '\0');
        for (int i = 0; i < 8; ++i)
            bytes[i] = char(value >> (8 * i));
        return bytes;
    }
    QByteArray bytes(int series)
    {
        if (series > 2)
            return longBytes();
        const std::uint32_t bits = m_random.oneIn(10) ? 0x7F800000 : m_random.bits();
        QByteArray value(series == 0 ? 2 : 4, '\0');
        for (int i = 0; i < int(value.size()); ++i)
            value[i] = char(bits >> (8 * i));
        if (series == 1 && std::isfinite(*reinterpret_cast<const float*>(value.constData())))
            value[3] = char(0x3F); // numbers of one size, which a sum in doubles does not round
        if (series == 2)
            value = value.repeated(m_random.below(220)) + char(m_random.below(256));
        return value;
    }
    Change change(int series, qint64 earliest)
    {
        const Quality quality = m_random.oneIn(4) ? Quality(m_random.below(4)) : Quality::Good;
        const qint64 time = qMax<qint64>(earliest, m_now - m_random.below(12));
        const bool hasNone = quality == Quality::Gap || m_random.oneIn(20);
        return {series, {time, quality, hasNone ? QByteArray() : bytes(series)}};
    }
    void step()
    {
        switch (m_random.below(20)) {
            case 0:
                return goBack();
            case 1:
                return reopen();
            case 2:
                return dieAndReopen();
            case 3:
                return lose();
            default:
                m_now = qMin<qint64>(kTimes - 1, m_now + m_random.below(20));
                return give(false);
        }
    }
    /// Changes of this step; those of a new run are recorded behind what is given again.
    void give(bool isNewRun)
    {
        QVector<Change> changes;
        const int count = m_random.below(6);
        for (int i = 0; i < count; ++i)
            changes.append(change(m_random.below(kSeries), 0));
        if (isNewRun) {
            for (const Change& one : changes)
                m_held.remove(one.series);
            begun(m_now);
        }
        QVector<Change> given;
        for (const Change& one : changes) {
            m_models[one.series].set(one.sample);
            m_held.insert(one.series, one.sample);
            given.append({m_ids[one.series], one.sample});
        }
        append(*m_recorder, given, m_now);
        m_until = m_now;
    }
    void goBack()
    {
        const qint64 before = m_now;
        m_now -= qMin<qint64>(m_now, m_random.below(60));
        for (Model& model : m_models) {
            if (m_now < before)
                model.set(gap(before));
        }
        give(m_now < before);
    }
    void reopen()
    {
        m_recorder.reset();
        closed();
        m_now = qMin<qint64>(kTimes - 1, m_now + m_random.below(20));
        m_recorder = open(m_now, m_limits);
        begin();
        begun(m_now);
    }
    void dieAndReopen()
    {
        give(false); // brings the time to the disk if there is any change
        leaveAsKilled();
        m_recorder.reset();
        const recorder::Run last = runs().last();
        EXPECT_EQ(Ending::Open, last.ending);
        EXPECT_LE(last.until, m_now);
        m_held.clear();
        for (Model& model : m_models)
            model.set(gap(last.until));
        m_now = qMin<qint64>(kTimes - 1, m_now + m_random.below(20));
        m_recorder = open(m_now, m_limits);
        begin();
        begun(m_now);
    }
    void lose()
    {
        for (Model& model : m_models)
            model.set(gap(m_now));
        QVector<Change> lost;
        m_now = qMin<qint64>(kTimes - 1, m_now + m_random.below(20));
        for (int i = 0; i < m_random.below(4); ++i) {
            const Change one = change(m_random.below(kSeries), 0);
            m_held.insert(one.series, one.sample);
            lost.append({m_ids[one.series], one.sample});
        }
        m_recorder->giveUp(lost);
        give(true);
    }
    void compare()
    {
        const std::unique_ptr<Reader> reader = read();
        compareAll(*reader);
        const auto again = [&] { compareAll(*reader); };
        ASSERT_TRUE(succeeds(reader->inOneState(m_ids, again))) << error.toStdString();
    }
    void compareAll(Reader& reader)
    {
        for (int i = 0; i < kSeries; ++i) {
            for (int query = 0; query < 6; ++query) {
                const int from = query == 0 ? 0 : m_random.below(kTimes);
                const int to = query == 0 ? kTimes : m_random.between(from + 1, kTimes);
                compareChanges(reader, i, from, to);
                compareAggregates(reader, i, from, to);
            }
        }
    }
    void compareChanges(Reader& reader, int series, int from, int to)
    {
        const Expected<History> history = reader.changes(m_ids[series], from, to);
        ASSERT_TRUE(succeeds(history)) << error.toStdString();
        const Sample before = m_models[series].heldBefore(from);
        EXPECT_EQ(before.quality, history->before.quality);
        if (before.quality != Quality::Gap) {
            EXPECT_EQ(before, history->before);
        }
        ASSERT_EQ(m_models[series].samples(from, to), history->samples)
            << "series " << series << " from " << from << " to " << to;
    }
    void compareAggregates(Reader& reader, int series, int from, int to)
    {
        const int step = m_random.between(1, to - from);
        const int most = m_random.between(1, 30);
        const Expected<QVector<Aggregate>> steps =
            reader.aggregates(m_ids[series], from, to, step, most);
        ASSERT_TRUE(succeeds(steps)) << error.toStdString();
        ASSERT_EQ((to - from + step - 1) / step, steps->size());
        const SeriesDescription& description = m_descriptions[series];
        for (int i = 0; i < int(steps->size()); ++i) {
            const Aggregate& found = (*steps)[i];
            const int begin = from + i * step;
            const Model::Wanted wanted =
                m_models[series].aggregate(description, begin, qMin(to, begin + step));
            ASSERT_EQ(begin, found.begin);
            ASSERT_DOUBLE_EQ(wanted.coverage, found.coverage);
            ASSERT_EQ(wanted.rest, found.rest);
            if (wanted.coverage == 0)
                continue;
            // Sums of large numbers of either sign are rounded as these are.
            const double size = series > 2 ? 1e20 : std::abs(wanted.mean);
            ASSERT_NEAR(wanted.mean, found.mean, 1e-12 * std::max(1.0, size));
            ASSERT_EQ(wanted.least, valueOf(*description.type, found.minimum));
            ASSERT_EQ(wanted.most, valueOf(*description.type, found.maximum));
        }
    }

    plc::test::Random m_random{0};
    Limits m_limits;
    qint64 m_now = 0;
    qint64 m_until = 0;
    QVector<SeriesDescription> m_descriptions;
    QVector<int> m_ids;
    std::unique_ptr<Recorder> m_recorder;
    QVector<Model> m_models;
    QHash<int, Sample> m_held;
};

TEST_F(RandomHistory, IsReadAsItWasHeldMillisecondByMillisecond)
{
    const int histories = qEnvironmentVariableIntValue("PLC_HISTORIES");
    const std::uint32_t count = std::uint32_t(histories > 0 ? histories : 40);
    for (std::uint32_t seed = 1; seed <= count; ++seed) {
        SCOPED_TRACE(seed);
        run(seed);
        if (HasFatalFailure() || HasNonfatalFailure())
            break;
    }
}

} // namespace
} // namespace test
} // namespace plc::recorder
