#include "gateway/faults/truth.h"

#include <algorithm>

namespace plc::faults {
namespace {

/// What a value's time may lie before its setting: it is that of the request, whose reply came no
/// later than the project's reply time-out allows.
constexpr qint64 kLongestReply = 500; // ms

std::string text(const QByteArray& name, qint64 value)
{
    return name.toStdString() + " = " + std::to_string(value);
}

} // namespace

void Truth::begin(const QByteArray& name, qint64 value, qint64 time)
{
    m_values[name] = {{value, time, time, true}};
}

void Truth::set(const QByteArray& name, qint64 value, qint64 from, qint64 until)
{
    m_values.at(name).push_back({value, from, until, true});
}

void Truth::clockIsSet(qint64 ahead, qint64 from, qint64 until)
{
    m_clock.push_back({ahead, from, until});
}

/// Whether the clock can have shown this time in between. No end: until today.
bool Truth::wasSo(qint64 time, qint64 from, std::optional<qint64> until) const
{
    for (std::size_t i = 0; i < m_clock.size(); ++i) {
        const bool isLast = i + 1 == m_clock.size();
        const bool wasBefore = until && m_clock[i].from > *until;
        const bool wasAfter = !isLast && m_clock[i + 1].until < from;
        const qint64 real = time - m_clock[i].ahead;
        if (!wasBefore && !wasAfter && real >= from && (!until || real <= *until))
            return true;
    }
    return false;
}

void Truth::excuseSince(qint64 time)
{
    for (auto& [name, values] : m_values) {
        for (TrueValue& value : values)
            value.isMissable = value.isMissable || value.knownSince >= time;
    }
}

int Truth::required() const
{
    int count = 0;
    for (const auto& [name, values] : m_values) {
        count += int(std::count_if(values.begin(), values.end(),
                                   [](const TrueValue& value) { return !value.isMissable; }));
    }
    return count;
}

std::vector<std::string> Truth::missing(const std::vector<ToldValue>& told) const
{
    std::set<std::pair<QByteArray, qint64>> come;
    for (const ToldValue& each : told)
        come.insert({each.name, each.value});
    std::vector<std::string> missing;
    for (const auto& [name, values] : m_values) {
        for (const TrueValue& value : values) {
            if (!value.isMissable && come.count({name, value.value}) == 0)
                missing.push_back(text(name, value.value));
        }
    }
    return missing;
}

std::vector<std::string> Truth::missingAmongTheLast(const std::vector<ToldValue>& told) const
{
    std::map<QByteArray, qint64> firstOfHistory;
    for (const ToldValue& each : told) {
        if (each.isHistorical)
            firstOfHistory.insert({each.name, each.value});
    }
    Truth last;
    for (const auto& [name, first] : firstOfHistory) {
        for (const TrueValue& value : m_values.at(name)) {
            if (value.value >= first)
                last.m_values[name].push_back(value);
        }
    }
    return last.missing(told);
}

bool Truth::isLastTold(const std::vector<ToldValue>& told) const
{
    return std::all_of(m_values.begin(), m_values.end(), [&told](const auto& each) {
        return std::any_of(told.begin(), told.end(), [&each](const ToldValue& one) {
            return one.name == each.first && one.value == each.second.back().value;
        });
    });
}

std::vector<std::string> Truth::invented(const std::vector<ToldValue>& told) const
{
    std::vector<std::string> invented;
    for (const ToldValue& each : told) {
        const auto values = m_values.find(each.name);
        if (values == m_values.end())
            continue;
        const auto found =
            std::find_if(values->second.begin(), values->second.end(),
                         [&](const TrueValue& value) { return value.value == each.value; });
        if (found == values->second.end()) {
            invented.push_back(text(each.name, each.value) + " was never so");
            continue;
        }
        const auto next = found + 1;
        const bool isLast = next == values->second.end();
        const auto until = isLast ? std::nullopt : std::optional<qint64>(next->knownSince);
        if (!wasSo(each.time, found->setAt - kLongestReply, until)) {
            invented.push_back(text(each.name, each.value) + " at " + std::to_string(each.time) +
                               ", which it was from " + std::to_string(found->setAt) + " to " +
                               std::to_string(until.value_or(0)));
        }
    }
    return invented;
}

} // namespace plc::faults
