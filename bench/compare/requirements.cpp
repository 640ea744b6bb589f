#include "requirements.h"

#include <cstdio>

namespace plc::bench {
namespace {

/// What is asked of the host's quantity as a multiple of another client's.
struct Requirement {
    enum class Bound { AtLeast, AtMost };
    struct Quantity {
        const char* name;
        double (*of)(const Measurement&);
        Bound bound;
    };

    const Quantity& quantity;
    Work work;
    int delay;
    Peer other;
    double multiple;

    bool isReachedBy(double ratio) const
    {
        return quantity.bound == Bound::AtLeast ? ratio >= multiple : ratio <= multiple;
    }
};

constexpr Requirement::Quantity kSpeed = {"values a second", valuesPerSecond,
                                          Requirement::Bound::AtLeast};
constexpr Requirement::Quantity kProcessorTime = {"processor time a value", processorTimePerValue,
                                                  Requirement::Bound::AtMost};

constexpr Requirement kRequirements[] = {
    {kSpeed, Work::Block, 0, Peer::Libmodbus, 1.5},
    {kSpeed, Work::Block, 1, Peer::Libmodbus, 3.5},
    {kSpeed, Work::Block, 10, Peer::Libmodbus, 3.5},
    {kSpeed, Work::Scattered, 1, Peer::Libmodbus, 80},
    {kSpeed, Work::Scattered, 10, Peer::Libmodbus, 80},
    {kSpeed, Work::Writes, 1, Peer::Libmodbus, 30},
    {kSpeed, Work::Writes, 10, Peer::Libmodbus, 30},
    {kProcessorTime, Work::Writes, 1, Peer::Libmodbus, 0.2},
    {kProcessorTime, Work::Clusters, 1, Peer::Qt, 0.8},
};

void tell(const Requirement& requirement, double ratio)
{
    std::printf("%s  (%c) %d ms, %s: %.2f of %s's, at %s %.2f\n",
                requirement.isReachedBy(ratio) ? "reached" : "MISSED ", letterOf(requirement.work),
                requirement.delay, requirement.quantity.name, ratio,
                qPrintable(nameOf(requirement.other)),
                requirement.quantity.bound == Requirement::Bound::AtLeast ? "least" : "most",
                requirement.multiple);
}

} // namespace

bool checkRequirements(const std::vector<Result>& results)
{
    bool good = true;
    for (const Requirement& requirement : kRequirements) {
        const Result* host = find(results, requirement.work, requirement.delay, Peer::Host);
        if (!host)
            continue;
        const double ratio = ratioTo(requirement.other, results, *host, requirement.quantity.of);
        tell(requirement, ratio);
        good = good && requirement.isReachedBy(ratio);
    }
    return good;
}

} // namespace plc::bench
