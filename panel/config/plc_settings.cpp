#include "panel/config/plc_settings.h"

#include <algorithm>
#include <tuple>

namespace plc::panel {
namespace {

auto fields(const configuration::DeadbandRule& rule)
{
    return std::tie(rule.labels, rule.deadband);
}

auto fields(const configuration::WritableRule& rule)
{
    return std::tie(rule.labels, rule.lowest, rule.highest);
}

template <typename T>
bool areSame(const QVector<T>& a, const QVector<T>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const T& x, const T& y) { return fields(x) == fields(y); });
}

} // namespace

bool isSame(const PlcSettings& a, const PlcSettings& b)
{
    const bool isSameWritable = a.writable && b.writable
                                    ? areSame(*a.writable, *b.writable)
                                    : a.writable.has_value() == b.writable.has_value();
    return std::tie(a.name, a.project, a.address, a.port, a.cycleTime, a.record) ==
               std::tie(b.name, b.project, b.address, b.port, b.cycleTime, b.record) &&
           areSame(a.deadbands, b.deadbands) && isSameWritable;
}

} // namespace plc::panel
