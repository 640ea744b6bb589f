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
        const bool isTooEarly = each.time < found->setAt - kLongestReply;
        const auto next = found + 1;
        const bool isTooLate = next != values->second.end() && each.time > next->knownSince;
        if (isTooEarly || isTooLate) {
            invented.push_back(text(each.name, each.value) + " at " + std::to_string(each.time) +
                               ", which it was from " + std::to_string(found->setAt) + " to " +
                               std::to_string(isTooLate ? next->knownSince : 0));
        }
    }
    return invented;
}

} // namespace plc::faults
