#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <sstream>
#include <vector>

#include "panel/alarms/alarm_engine.h"
#include "tests/panel/alarms/alarm_examples.h"
#include "tests/support/random.h"

namespace plc::panel {
namespace {

constexpr int kTicks = 160;
constexpr int kRuns = 200;

/// What happens at a tick, which is a millisecond.
struct Tick {
    bool restarts = false; ///< Before all else.
    bool isLost = false;
    std::optional<int> value;
    bool isConfirmed = false; ///< All values were asked for.
    bool isAcknowledged = false;
};

/// An occurrence as the whole record of a run shows it.
struct Found {
    int begin = 0;
    int value = 0;
    int foundAt = 0;
    std::optional<int> end;
    bool isBeginUnseen = false;
    bool isEndUnseen = false;
    bool hasGap = false;
    bool hasRestart = false;
    std::optional<int> acknowledgedAt;
};

/// Finds occurrences by looking at all that has happened, again and again from the beginning.
class Model {
public:
    Model(const AlarmSettings& alarm, std::vector<Tick> ticks)
        : m_limit(int(alarm.limit)),
          m_clear(int(alarm.limit - alarm.deadband)),
          m_delay(int(alarm.delay)),
          m_ticks(std::move(ticks))
    {
    }
    /// What was known before the events of a tick, but behind its restart.
    std::optional<int> before(int tick) const
    {
        if (m_ticks[std::size_t(tick)].restarts || tick == 0)
            return {};
        return at(tick - 1);
    }
    /// What was known behind the events of a tick.
    std::optional<int> at(int tick) const
    {
        for (int t = tick; t >= 0; --t) {
            const Tick& found = m_ticks[std::size_t(t)];
            if (found.value)
                return found.value;
            if (found.isLost || found.restarts)
                return {};
        }
        return {};
    }
    std::vector<Found> occurrences() const
    {
        std::vector<Found> list;
        int from = 0;
        while (const std::optional<Found> next = nextFrom(from)) {
            list.push_back(*next);
            if (!next->end)
                break;
            from = *next->end + 1;
        }
        return list;
    }

private:
    int size() const { return int(m_ticks.size()); }
    bool holdsAt(int tick) const { return at(tick).value_or(m_limit) > m_limit; }

    std::optional<Found> nextFrom(int from) const
    {
        for (int begin = from; begin < size(); ++begin) {
            const bool heldBefore = begin > from && before(begin).value_or(m_limit) > m_limit;
            if (!holdsAt(begin) || heldBefore)
                continue;
            for (int tick = begin; tick < size() && holdsAt(tick); ++tick) {
                const Tick& found = m_ticks[std::size_t(tick)];
                if (tick > begin && found.restarts)
                    break;
                if ((found.value || found.isConfirmed) && tick - begin >= m_delay)
                    return followed(begin, tick);
            }
        }
        return {};
    }
    Found followed(int begin, int foundAt) const
    {
        Found found;
        found.begin = begin;
        found.value = *at(begin);
        found.foundAt = foundAt;
        found.isBeginUnseen = !before(begin);
        for (int tick = foundAt + 1; tick < size() && !found.end; ++tick) {
            const Tick& happens = m_ticks[std::size_t(tick)];
            found.hasRestart = found.hasRestart || happens.restarts;
            found.hasGap = found.hasGap || (happens.isLost && before(tick));
            if (happens.value && *happens.value <= m_clear) {
                found.end = tick;
                found.isEndUnseen = !before(tick);
            }
        }
        return found;
    }

    const int m_limit;
    const int m_clear;
    const int m_delay;
    const std::vector<Tick> m_ticks;
};

Tick randomTick(plc::test::Random* random)
{
    Tick tick;
    tick.restarts = random->oneIn(40);
    if (random->oneIn(12))
        tick.isLost = true;
    else if (random->oneIn(2))
        tick.value = random->between(-4, 6);
    tick.isConfirmed = random->oneIn(2);
    tick.isAcknowledged = random->oneIn(10);
    return tick;
}

std::string shown(const Found& found)
{
    std::ostringstream text;
    text << found.begin << ".." << found.end.value_or(-1) << " =" << found.value
         << (found.isBeginUnseen ? " B" : "") << (found.isEndUnseen ? " E" : "")
         << (found.hasGap ? " g" : "") << (found.hasRestart ? " r" : "") << " a"
         << found.acknowledgedAt.value_or(-1);
    return text.str();
}

std::string shown(const AlarmOccurrence& found)
{
    Found same;
    same.begin = int(found.begin);
    same.value = int(std::get<qint64>(*found.value));
    if (found.end)
        same.end = int(*found.end);
    same.isBeginUnseen = found.isBeginUnseen;
    same.isEndUnseen = found.isEndUnseen;
    same.hasGap = found.hasGap;
    same.hasRestart = found.hasRestart;
    if (found.acknowledgedAt)
        same.acknowledgedAt = int(*found.acknowledgedAt);
    return shown(same);
}

/// The engine, restarted with what it gave to be kept.
class Run {
public:
    explicit Run(const AlarmSettings& alarm) : m_alarm(alarm) { restart(0); }

    void take(int time, const Tick& tick)
    {
        const Moment now{time, time};
        if (tick.restarts)
            restart(time);
        if (tick.value)
            m_engine->take(m_alarm.plc, m_alarm.label, {values::Value(qint64(*tick.value)), now});
        else if (tick.isLost)
            m_engine->take(m_alarm.plc, m_alarm.label, {{}, now});
        if (tick.isConfirmed)
            m_engine->confirm(m_alarm.plc, now);
        m_engine->advance(now);
        collect();
    }
    /// The number of the occurrence that was acknowledged, counted from 0.
    std::optional<int> acknowledge(int time)
    {
        const std::optional<AlarmOccurrence> newest = m_engine->status(0).occurrence;
        if (!newest)
            return {};
        const Expected<AlarmOccurrence> done =
            m_engine->acknowledged(0, newest->begin, QStringLiteral("anna"), time);
        if (!done)
            return {};
        m_engine->acknowledge(0, *done);
        collect();
        return int(done->number) - 1;
    }
    AlarmStatus status() const { return m_engine->status(0); }
    const std::map<qint64, AlarmOccurrence>& kept() const { return m_kept; }

private:
    void restart(int time)
    {
        QVector<KeptOccurrence> kept;
        int before = 0;
        for (const auto& [number, occurrence] : m_kept) {
            const bool isNewest = number == qint64(m_kept.size());
            if (isNewest && (!occurrence.end || !occurrence.acknowledgedAt))
                kept.append({occurrence, occurrence.acknowledgedAt ? 0 : before});
            before = occurrence.acknowledgedAt ? 0 : before + 1;
        }
        m_engine = std::make_unique<AlarmEngine>(QVector<AlarmSettings>{m_alarm}, kept,
                                                 qint64(m_kept.size()) + 1, time);
        collect();
    }
    void collect()
    {
        for (const AlarmOccurrence& occurrence : m_engine->takeChanges().occurrences)
            m_kept[occurrence.number] = occurrence;
    }

    const AlarmSettings m_alarm;
    std::unique_ptr<AlarmEngine> m_engine;
    std::map<qint64, AlarmOccurrence> m_kept;
};

struct Expectation {
    AlarmState state = AlarmState::Unknown;
    int unacknowledgedBefore = 0;
};

Expectation expected(const std::vector<Found>& list, bool isKnown)
{
    Expectation expectation;
    if (isKnown)
        expectation.state = AlarmState::Normal;
    if (list.empty())
        return expectation;
    const Found& newest = list.back();
    const bool isCurrent = !newest.end || !newest.acknowledgedAt;
    if (isKnown && isCurrent)
        expectation.state = newest.end ? AlarmState::Ended : AlarmState::Active;
    if (newest.acknowledgedAt)
        return expectation;
    for (std::size_t i = list.size() - 1; i > 0 && !list[i - 1].acknowledgedAt; --i)
        ++expectation.unacknowledgedBefore;
    return expectation;
}

/// Whether the engine and the model agree at each tick of a run.
void compare(std::uint32_t seed)
{
    plc::test::Random random(seed);
    const AlarmSettings alarm = test::above(random.between(0, 2), random.below(4), random.below(6));
    Run run(alarm);
    std::vector<Tick> ticks;
    std::map<int, int> acknowledged; // tick, by the place of the occurrence
    for (int time = 0; time < kTicks; ++time) {
        ticks.push_back(randomTick(&random));
        run.take(time, ticks.back());
        const Model model(alarm, ticks);
        if (ticks.back().isAcknowledged) {
            if (const std::optional<int> place = run.acknowledge(time))
                acknowledged[*place] = time;
        }
        std::vector<Found> list = model.occurrences();
        ASSERT_EQ(list.size(), run.kept().size()) << "seed " << seed << ", tick " << time;
        for (int place = 0; place < int(list.size()); ++place) {
            if (acknowledged.count(place) > 0)
                list[std::size_t(place)].acknowledgedAt = acknowledged[place];
            ASSERT_EQ(shown(list[std::size_t(place)]), shown(run.kept().at(place + 1)))
                << "seed " << seed << ", tick " << time;
        }
        const Expectation expectation = expected(list, model.at(time).has_value());
        ASSERT_EQ(alarmStateText(expectation.state), alarmStateText(run.status().state))
            << "seed " << seed << ", tick " << time;
        ASSERT_EQ(expectation.unacknowledgedBefore, run.status().unacknowledgedBefore)
            << "seed " << seed << ", tick " << time;
    }
}

TEST(RandomAlarms, BeginAndEndAsTheWholeRecordShows)
{
    for (std::uint32_t seed = 1; seed <= kRuns && !HasFatalFailure(); ++seed)
        compare(seed);
}

} // namespace
} // namespace plc::panel
